#include "morvakit/archive/lzma_stream.h"

#include <array>
#include <cstdlib>
#include <new>
#include <string>

#include <lzma.h>

namespace morvakit {

namespace {

constexpr std::uint64_t memory_limit = std::uint64_t{192} << 20;
constexpr std::size_t piece_size = std::size_t{64} << 10;

lzma_vli filter_of(LzmaStep::Method method) {
  using Method = LzmaStep::Method;
  switch (method) {
    case Method::lzma:
      return LZMA_FILTER_LZMA1EXT;
    case Method::lzma2:
      return LZMA_FILTER_LZMA2;
    case Method::delta:
      return LZMA_FILTER_DELTA;
    case Method::x86:
      return LZMA_FILTER_X86;
    case Method::powerpc:
      return LZMA_FILTER_POWERPC;
    case Method::itanium:
      return LZMA_FILTER_IA64;
    case Method::arm:
      return LZMA_FILTER_ARM;
    case Method::arm_thumb:
      return LZMA_FILTER_ARMTHUMB;
    case Method::sparc:
      return LZMA_FILTER_SPARC;
  }
  return LZMA_VLI_UNKNOWN;
}

/// Whether the library did what it was asked for.
bool is_good(lzma_ret result) {
  if (result == LZMA_MEM_ERROR) {
    throw std::bad_alloc();
  }
  return result == LZMA_OK;
}

/// The library's form of steps of unpacking.
class FilterChain {
 public:
  FilterChain() { filters_.fill({LZMA_VLI_UNKNOWN, nullptr}); }
  ~FilterChain() {
    for (auto const& filter : filters_) {
      std::free(filter.options);
    }
  }
  FilterChain(FilterChain const&) = delete;
  FilterChain& operator=(FilterChain const&) = delete;

  lzma_filter const* data() const { return filters_.data(); }

  /// False when the library knows of no such chain.
  bool build(std::vector<LzmaStep> const& steps, std::int64_t unpacked) {
    if (steps.empty() || steps.size() > LZMA_FILTERS_MAX) {
      return false;
    }
    // The library names them in the order of packing.
    for (std::size_t i = 0; i < steps.size(); ++i) {
      auto const& step = steps[steps.size() - 1 - i];
      auto& filter = filters_[i];
      filter.id = filter_of(step.method);
      auto const* const properties = reinterpret_cast<std::uint8_t const*>(step.properties.data());
      if (!is_good(lzma_properties_decode(&filter, nullptr, properties, step.properties.size()))) {
        return false;
      }
      if (step.method == LzmaStep::Method::lzma) {
        auto& options = *static_cast<lzma_options_lzma*>(filter.options);
        options.ext_flags = LZMA_LZMA1EXT_ALLOW_EOPM;
        lzma_set_ext_size(options, static_cast<std::uint64_t>(unpacked));
      }
    }
    return true;
  }

 private:
  std::array<lzma_filter, LZMA_FILTERS_MAX + 1> filters_{};
};

}  // namespace

struct LzmaStream::State {
  State(Orlec::Reader const& whole, ParseWatch& parse) : reader(whole), watch(parse) {}
  ~State() { lzma_end(&lzma); }
  State(State const&) = delete;
  State& operator=(State const&) = delete;

  void fill();
  void refuse_dictionary();

  Orlec::Reader const& reader;
  ParseWatch& watch;
  lzma_stream lzma = LZMA_STREAM_INIT;
  std::vector<std::uint8_t> packed = std::vector<std::uint8_t>(piece_size);
  std::vector<std::uint8_t> unpacked = std::vector<std::uint8_t>(piece_size);
  std::int64_t position = 0;
  lzma_action action = LZMA_RUN;
  bool is_at_end = false;
  bool has_failed = false;
};

void LzmaStream::State::fill() {
  if (lzma.avail_in > 0 || action == LZMA_FINISH) {
    return;
  }
  auto const got = reader.ReadAt(position, packed.data(), static_cast<std::int64_t>(piece_size));
  has_failed = got < 0;
  if (got <= 0) {
    action = LZMA_FINISH;
    return;
  }
  position += got;
  lzma.next_in = packed.data();
  lzma.avail_in = static_cast<std::size_t>(got);
}

void LzmaStream::State::refuse_dictionary() {
  has_failed = true;
  watch.end(Orlec::ParseOutcome::limit_reached,
            "a dictionary over " + std::to_string(memory_limit) + " bytes");
}

LzmaStream::LzmaStream(Orlec::Reader const& file, ParseWatch& watch)
    : state_(std::make_unique<State>(file, watch)) {
  state_->has_failed = !is_good(lzma_auto_decoder(&state_->lzma, memory_limit, LZMA_CONCATENATED));
}

LzmaStream::LzmaStream(Orlec::Reader const& data, ParseWatch& watch,
                       std::vector<LzmaStep> const& steps, std::int64_t unpacked)
    : state_(std::make_unique<State>(data, watch)) {
  FilterChain chain;
  auto const is_chain = chain.build(steps, unpacked);
  auto const memory = is_chain ? lzma_raw_decoder_memusage(chain.data()) : UINT64_MAX;
  if (memory == UINT64_MAX) {
    state_->has_failed = true;
  } else if (memory > memory_limit) {
    state_->refuse_dictionary();
  } else {
    state_->has_failed = !is_good(lzma_raw_decoder(&state_->lzma, chain.data()));
  }
}

LzmaStream::~LzmaStream() = default;

bool LzmaStream::has_failed() const {
  return state_->has_failed;
}

std::string_view LzmaStream::next() {
  auto& state = *state_;
  state.lzma.next_out = state.unpacked.data();
  state.lzma.avail_out = piece_size;
  while (state.lzma.avail_out == piece_size && !state.is_at_end && !state.has_failed) {
    state.fill();
    auto const result = lzma_code(&state.lzma, state.action);
    state.is_at_end = result == LZMA_STREAM_END;
    if (result == LZMA_MEMLIMIT_ERROR) {
      state.refuse_dictionary();
    }
    state.has_failed = state.has_failed || !state.watch.keep_going() ||
                       (!is_good(result) && result != LZMA_STREAM_END);
  }
  return {reinterpret_cast<char const*>(state.unpacked.data()), piece_size - state.lzma.avail_out};
}

}  // namespace morvakit
