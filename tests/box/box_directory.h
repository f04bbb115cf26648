#pragma once

#include <string>
#include <vector>

#include "box/HFileClusterBoxIni.h"
#include "box/HFileClusterBoxMgr.h"
#include "host/QXPPolicyMorvaClustBox.h"

#include "support/temporary_directory.h"

namespace test {

/// A directory of boxes with its index and a manager of its own, in place of the machine's.
class BoxDirectory {
 public:
  BoxDirectory() {
    HFileClusterBoxIni::mstr_box_ini = directory_ / "box.ini";
    HFileClusterBoxMgr::pbox = &manager_;
  }
  ~BoxDirectory() {
    HFileClusterBoxMgr::pbox = nullptr;
    HFileClusterBoxIni::mstr_box_ini = old_index_;
  }
  BoxDirectory(BoxDirectory const&) = delete;
  BoxDirectory& operator=(BoxDirectory const&) = delete;

  TemporaryDirectory const& files() const { return directory_; }
  HString operator/(char const* name) const { return directory_ / name; }
  std::string index() const { return directory_.read("box.ini"); }
  void put_index(std::string const& content) const { directory_.write("box.ini", content); }

 private:
  TemporaryDirectory directory_;
  EnvironmentVariable const variable_{"MORVA_BOX_PATH", directory_.path().string()};
  HString const old_index_ = HFileClusterBoxIni::mstr_box_ini;
  HFileClusterBoxMgr manager_;
};

/// A K-means box of the classes with these ids.
inline QXPPolicyMorvaClustBox box_of(std::vector<HString> const& class_ids) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {L"word"};
  for (HString const& id : class_ids) {
    QXPKMeansNode node;
    node.str_class_id = id;
    box.vt_kmeans_node.push_back(node);
  }
  return box;
}

}  // namespace test
