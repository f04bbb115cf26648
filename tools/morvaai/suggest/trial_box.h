#pragma once

#include <optional>
#include <vector>

#include "morvaai.h"

#include "classes/method.h"

namespace tool {

/// A box that is asked as if it were installed, without a file: as long as this lives, it is the
/// only box of `HFileClusterBoxMgr`.
class TrialBox {
 public:
  explicit TrialBox(QXPPolicyMorvaClustBox content);
  ~TrialBox();
  TrialBox(TrialBox const&) = delete;
  TrialBox& operator=(TrialBox const&) = delete;

  /// For all classes of a box of files.
  void set_neighbourhood(Neighbourhood const& neighbourhood);

  /// The class that `match` gives the document; nothing where it gives none.
  std::optional<HString> class_of(HFeatureNode const& document) const;

 private:
  HString id_;
  HFileClusterBoxMgr manager_;
  HFileClusterBoxMgr* installed_;
};

}  // namespace tool
