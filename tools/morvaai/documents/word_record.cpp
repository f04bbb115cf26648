#include "documents/word_record.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace tool {

namespace {

template <typename Number>
void put(std::string& packed, Number number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  packed.append(bytes, sizeof number);
}

void put_text(std::string& packed, HString const& text) {
  std::string const bytes = morvabs::to_utf8(text.get_ws());
  put(packed, static_cast<std::uint32_t>(bytes.size()));
  packed += bytes;
}

/// Takes one thing after the other off bytes that may lie. Over their end there is nothing any
/// more, and all that is taken is empty.
class Taker {
 public:
  explicit Taker(std::string_view bytes) : rest_(bytes) {}

  bool is_good() const { return is_good_; }
  bool is_at_end() const { return rest_.empty(); }

  template <typename Number>
  Number take() {
    Number number{};
    std::string_view const bytes = take_bytes(sizeof number);
    if (is_good_) {
      std::memcpy(&number, bytes.data(), sizeof number);
    }
    return number;
  }

  HString take_text() {
    auto const size = take<std::uint32_t>();
    return HString(std::string(take_bytes(size)).c_str());
  }

 private:
  std::string_view take_bytes(std::size_t size) {
    is_good_ = is_good_ && size <= rest_.size();
    if (!is_good_) {
      return {};
    }
    std::string_view const taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
  bool is_good_ = true;
};

bool is_fingerprint(HString const& text) {
  return morvabs::to_utf8(text.get_ws()).find_first_not_of("0123456789abcdefABCDEF") ==
         std::string::npos;
}

}  // namespace

std::string pack(WordRecord const& record) {
  std::string packed;
  put_text(packed, record.dna);
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    put_text(packed, record.words[i]);
    put(packed, static_cast<std::int32_t>(record.counts[i]));
    put(packed, record.weights[i]);
  }
  return packed;
}

std::optional<WordRecord> unpack_record(std::string_view packed) {
  Taker taker(packed);
  WordRecord record;
  record.dna = taker.take_text();
  bool is_plausible = is_fingerprint(record.dna);
  while (taker.is_good() && is_plausible && !taker.is_at_end()) {
    record.words.push_back(taker.take_text());
    record.counts.push_back(taker.take<std::int32_t>());
    record.weights.push_back(taker.take<double>());
    is_plausible = record.counts.back() >= 0 && std::isfinite(record.weights.back());
  }
  if (!taker.is_good() || !is_plausible) {
    return std::nullopt;
  }
  return record;
}

}  // namespace tool
