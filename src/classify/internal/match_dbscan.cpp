#include "classify/internal/match_dbscan.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "classify/internal/class_positions.h"
#include "classify/internal/comparison.h"
#include "host/internal/log_line.h"

namespace morva {

namespace {

constexpr wchar_t const* tag = L"../HFileMatchClassifyDBScan";
constexpr double tolerance = 0.000001;

// Whether the document coincides with a member or has enough of them as neighbours. The members
// are those of the comparison from `first` on; one that is not as long as the vocabulary is none.
bool belongs_to(QXPDBScanNode const& node, std::size_t words, Comparison& comparison,
                std::size_t first) {
  std::vector<char> const& coincides = comparison.within(tolerance);
  std::vector<char> const& is_near = comparison.within(node.d_eps + tolerance);
  std::int32_t neighbours = 0;
  for (std::size_t i = 0; i < node.vt_file_node.size(); ++i) {
    if (node.vt_file_node[i].vt_weight.size() != words) {
      continue;
    }
    neighbours += is_near[first + i];
    if (coincides[first + i] != 0 || neighbours >= node.i_minpts) {
      return true;
    }
  }
  return false;
}

std::size_t members_before(QXPDBScanNode const& node, std::vector<QXPDBScanNode> const& classes) {
  std::size_t count = 0;
  for (auto const* each = classes.data(); each != &node; ++each) {
    count += each->vt_file_node.size();
  }
  return count;
}

}  // namespace

bool match_dbscan(HFeatureNode const& node, std::span<HString const> class_ids,
                  QXPPolicyMorvaClustBox const& box, WeightLists const* members, HString& str_out) {
  auto const& classes = box.vt_dbscan_node;
  std::optional<Comparison> with_all;
  auto const is_accepted = [&](QXPDBScanNode const& wanted) {
    if (members == nullptr) {
      WeightLists const own(box.vt_words, lists_of(std::span(&wanted, 1)));
      Comparison comparison(node, own);
      return belongs_to(wanted, box.vt_words.size(), comparison, 0);
    }
    if (!with_all) {
      with_all.emplace(node, *members);
    }
    return belongs_to(wanted, box.vt_words.size(), *with_all, members_before(wanted, classes));
  };
  ClassPositions const positions(class_ids, classes, Occurrence::first);
  for (HString const& class_id : class_ids) {
    log_line(3, tag, __LINE__, L"dbscan node size : ", HString(classes.size()));
    std::optional<std::size_t> const found = positions.of(class_id);
    if (!found || classes[*found].vt_file_node.empty()) {
      log_line(3, tag, __LINE__, L"not find : ", class_id);
      continue;
    }
    QXPDBScanNode const& wanted = classes[*found];
    if (is_accepted(wanted)) {
      str_out = wanted.str_class_name;
      return true;
    }
  }
  return false;
}

}  // namespace morva
