#include "morvabs/locate.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/HAppUUID.h"
#include "host/HEnvironment.h"
#include "host/HInsLocateMgr.h"

#include "support/temporary_directory.h"

namespace {

using test::EnvironmentVariable;

HString executable_directory() {
  return {(std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/").c_str()};
}

TEST(HEnvironment, is_the_directory_of_the_executable) {
  EnvironmentVariable const run("MORVA_RUN_PATH", "");
  EXPECT_EQ(HEnvironment::GetMyExeFullFilePath(true), executable_directory());
}

TEST(HEnvironment, follows_the_variable_at_every_call) {
  EnvironmentVariable const run("MORVA_RUN_PATH", "/somewhere");
  EXPECT_EQ(HEnvironment::GetMyExeFullFilePath(true), HString(L"/somewhere/"));
  EXPECT_EQ(HEnvironment::GetMyExeFullFilePath(false), HString(L"/somewhere"));
  EnvironmentVariable const other("MORVA_RUN_PATH", "/elsewhere/");
  EXPECT_EQ(HEnvironment::GetMyExeFullFilePath(true), HString(L"/elsewhere/"));
}

TEST(HInsLocateMgr, is_the_users_data_directory) {
  EnvironmentVariable const run("MORVA_RUN_PATH", "");
  EnvironmentVariable const data("XDG_DATA_HOME", "/home/user/data");
  EXPECT_EQ(HInsLocateMgr::pins()->get_agent_path_public(true),
            HString(L"/home/user/data/morvaai/"));
}

TEST(HInsLocateMgr, follows_the_variable) {
  EnvironmentVariable const run("MORVA_RUN_PATH", "/run/here");
  EXPECT_EQ(HInsLocateMgr::ins()->get_agent_path_public(true), HString(L"/run/here/"));
}

TEST(UserDataDirectory, lies_below_the_home_directory) {
  EnvironmentVariable const data("XDG_DATA_HOME", "");
  EnvironmentVariable const home("HOME", "/home/user");
  EXPECT_EQ(morvabs::user_data_directory(), HString(L"/home/user/.local/share/morvaai"));
}

TEST(UserDataDirectory, a_relative_data_home_does_not_count) {
  EnvironmentVariable const data("XDG_DATA_HOME", "relative");
  EnvironmentVariable const home("HOME", "/home/user/");
  EXPECT_EQ(morvabs::user_data_directory(), HString(L"/home/user/.local/share/morvaai"));
}

TEST(UserDataDirectory, without_a_home_it_is_the_accounts) {
  EnvironmentVariable const data("XDG_DATA_HOME", "");
  EnvironmentVariable const home("HOME", "");
  EXPECT_EQ(morvabs::user_data_directory()[0], L'/');
}

TEST(HAppUUID, is_what_the_environment_says) {
  EnvironmentVariable const id("MORVA_AGENT_ID", "agent-7");
  EXPECT_EQ(HAppUUID::ins()->get(), HString(L"agent-7"));
}

TEST(HAppUUID, is_empty_without_an_agent) {
  EnvironmentVariable const id("MORVA_AGENT_ID", "");
  EXPECT_TRUE(HAppUUID::pins()->get().empty());
}

}  // namespace
