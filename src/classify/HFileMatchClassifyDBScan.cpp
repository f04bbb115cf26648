#include "classify/HFileMatchClassifyDBScan.h"

#include <span>

#include "classify/internal/match_dbscan.h"

HFileMatchClassifyDBScan::HFileMatchClassifyDBScan() = default;
HFileMatchClassifyDBScan::~HFileMatchClassifyDBScan() = default;

bool HFileMatchClassifyDBScan::match(HFeatureNode const& node, HString const& str_class_id,
                                     QXPPolicyMorvaClustBox const& box, HString& str_out) {
  return morva::match_dbscan(node, std::span(&str_class_id, 1), box, nullptr, str_out);
}
