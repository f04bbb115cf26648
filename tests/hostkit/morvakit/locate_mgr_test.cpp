#include <cstdlib>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "host/Orlec/LocateMgr.h"

namespace {

using Orlec::LocateMgr;

/// Each test has an environment of its own.
class LocateMgrTest : public testing::Test {
 protected:
  LocateMgrTest() {
    for (auto const* const name : {"MORVA_DICT_PATH", "MORVA_BOX_PATH", "XDG_DATA_HOME", "HOME"}) {
      if (char const* const value = std::getenv(name)) {
        former_[name] = value;
      }
      unsetenv(name);
    }
  }
  ~LocateMgrTest() override {
    for (auto const* const name : {"MORVA_DICT_PATH", "MORVA_BOX_PATH", "XDG_DATA_HOME", "HOME"}) {
      unsetenv(name);
    }
    for (auto const& [name, value] : former_) {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }

 private:
  std::map<std::string, std::string> former_;
};

}  // namespace

TEST_F(LocateMgrTest, both_names_give_one_object) {
  EXPECT_EQ(LocateMgr::ins(), LocateMgr::pins());
}

TEST_F(LocateMgrTest, a_set_variable_names_the_dictionaries_even_where_nothing_is) {
  setenv("MORVA_DICT_PATH", "/nowhere//dict", 1);
  EXPECT_EQ(LocateMgr::pins()->get_dict_path(false), HString("/nowhere//dict"));
  EXPECT_EQ(LocateMgr::pins()->get_dict_path(true), HString("/nowhere//dict/"));
}

TEST_F(LocateMgrTest, without_separator_the_variable_is_given_as_it_is) {
  setenv("MORVA_DICT_PATH", "/some/dict/", 1);
  EXPECT_EQ(LocateMgr::pins()->get_dict_path(false), HString("/some/dict/"));
}

TEST_F(LocateMgrTest, the_environment_is_asked_at_every_call) {
  setenv("MORVA_DICT_PATH", "/one", 1);
  LocateMgr::pins()->get_dict_path(false);
  setenv("MORVA_DICT_PATH", "/two", 1);
  EXPECT_EQ(LocateMgr::pins()->get_dict_path(false), HString("/two"));
}

TEST_F(LocateMgrTest, an_empty_variable_counts_as_unset) {
  auto const usual = LocateMgr::pins()->get_dict_path(false);
  setenv("MORVA_DICT_PATH", "", 1);
  EXPECT_EQ(LocateMgr::pins()->get_dict_path(false), usual);
}

TEST_F(LocateMgrTest, dictionaries_lie_in_the_data_directory_beside_the_library) {
  auto const path = LocateMgr::pins()->get_dict_path(false);
  EXPECT_EQ(path[0], L'/');
  EXPECT_EQ(path.get_last(13), HString("/morvaai/dict"));
}

TEST_F(LocateMgrTest, a_set_variable_names_the_boxes) {
  setenv("MORVA_BOX_PATH", "/boxes", 1);
  EXPECT_EQ(LocateMgr::pins()->get_box_path(true), HString("/boxes/"));
  EXPECT_EQ(LocateMgr::pins()->get_box_path(false), HString("/boxes"));
}

TEST_F(LocateMgrTest, boxes_lie_in_the_data_home) {
  setenv("XDG_DATA_HOME", "/data", 1);
  EXPECT_EQ(LocateMgr::pins()->get_box_path(true), HString("/data/morvaai/box/"));
}

TEST_F(LocateMgrTest, boxes_lie_below_the_home_directory_otherwise) {
  setenv("HOME", "/home/somebody", 1);
  EXPECT_EQ(LocateMgr::pins()->get_box_path(true),
            HString("/home/somebody/.local/share/morvaai/box/"));
}
