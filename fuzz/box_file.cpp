#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "hostkit/morvabs/box_support.h"
#include "morvabs/box_format.h"

#include "fuzz/require.h"

// Box files: one that is refused leaves the record as it was, one that loads can be saved, and what
// is saved loads as the same record and saves as the same bytes.

namespace {

using fuzz::require;
using test::BoxText;

QXPPolicyMorvaClustBox const& box_before() {
  static auto const* const box = new QXPPolicyMorvaClustBox(test::full_box());
  return *box;
}

/// The memory that the record's lists take, roughly.
std::size_t memory_of(QXPPolicyMorvaClustBox const& box) {
  constexpr std::size_t record = 128;
  std::size_t count = box.vt_words.size() + box.vt_reserved.size();
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    count += record + node.vt_words.size() + node.vt_weight.size();
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    count += record;
    for (QXPFeatureNode const& member : node.vt_file_node) {
      count += record + member.vt_weight.size();
    }
  }
  return count * sizeof(double);
}

void check_loaded(QXPPolicyMorvaClustBox const& box, std::size_t size) {
  std::size_t const memory = memory_of(box);
  require(memory <= morvabs::memory_of_any_box + morvabs::most_expansion * size,
          "a box takes memory in proportion to its file");
  std::optional<std::string> const saved = morvabs::encode_box(box);
  if (!saved) {
    // A file may have room that its record does not need: the new one, without it, would ask for
    // too much.
    require(memory > morvabs::memory_of_any_box / 4, "a box that loads can be saved");
    return;
  }
  // To compare large boxes takes longer than it tells.
  constexpr std::size_t worth_comparing = std::size_t{1} << 20;
  if (memory > worth_comparing) {
    return;
  }
  QXPPolicyMorvaClustBox again;
  require(morvabs::decode_box(*saved, again) == 0, "what is saved loads");
  require(BoxText::of(again) == BoxText::of(box), "what is saved loads as the same record");
  require(morvabs::encode_box(again) == saved, "equal boxes give equal files");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const content(reinterpret_cast<char const*>(data), size);
  QXPPolicyMorvaClustBox box = box_before();
  int const result = morvabs::decode_box(content, box);
  require(result <= 0, "an error number is negative");
  if (result == 0) {
    check_loaded(box, size);
  } else {
    require(BoxText::of(box) == BoxText::of(box_before()), "a refusal leaves the record as it was");
  }
  return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

/// Changes the payload and puts the header in front of it that belongs there; now and then all
/// bytes.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned int seed) {
  constexpr unsigned int raw_one_in = 16;
  if (seed % raw_one_in == 0 || max_size <= morvabs::box_header_size) {
    return LLVMFuzzerMutate(data, size, max_size);
  }
  std::size_t const header = std::min(size, morvabs::box_header_size);
  std::string payload(data + header, data + size);
  payload.resize(max_size - morvabs::box_header_size);
  payload.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(payload.data()), size - header,
                                  payload.size()));
  std::string const sealed = morvabs::seal_box(payload);
  std::memcpy(data, sealed.data(), sealed.size());
  return sealed.size();
}
