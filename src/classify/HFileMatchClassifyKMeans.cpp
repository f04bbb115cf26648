#include "classify/HFileMatchClassifyKMeans.h"

#include <span>

#include "classify/internal/match_kmeans.h"

HFileMatchClassifyKMeans::HFileMatchClassifyKMeans() = default;
HFileMatchClassifyKMeans::~HFileMatchClassifyKMeans() = default;

bool HFileMatchClassifyKMeans::match(HFeatureNode const& node, HString const& str_class_id,
                                     QXPPolicyMorvaClustBox const& box, HString& str_out) {
  return morva::match_kmeans(node, std::span(&str_class_id, 1), box, nullptr, str_out);
}
