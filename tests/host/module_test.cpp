#include <gtest/gtest.h>

#include "box/HFileClusterBoxIni.h"
#include "cluster/cluster_type.h"
#include "dna/HFileDNA.h"
#include "host/HClusterEnvironment.h"
#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/Orlec/LocateMgr.h"
#include "host/PrintMoudleVersion.h"

namespace {

TEST(Module, prints_its_version_on_standard_error) {
  testing::internal::CaptureStderr();
  int const written = PrintMoudleVersion();
  std::string const line = testing::internal::GetCapturedStderr();
  EXPECT_EQ(line, "libmorvaai               3.2306.4.13.1     2024-06-24 20:42:03\n");
  EXPECT_EQ(written, static_cast<int>(line.size()));
}

TEST(Module, the_version_begins_in_column_26) {
  testing::internal::CaptureStderr();
  PrintMoudleVersion();
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("3.2306"), 25U);
}

TEST(Module, no_agent_is_installed) {
  EXPECT_FALSE(HClusterEnvironment::IsAgentInstalled());
  EXPECT_FALSE(HClusterEnvironment::HAppExclusive_is_exist(L"VelorinAgentOnlyOneInstance"));
}

TEST(Module, no_server_is_known) {
  HString server(L"server");
  int port = 443;
  EXPECT_FALSE(HClusterEnvironment::get_server_ip_port(server, port));
  EXPECT_EQ(server, HString(L"server"));
  EXPECT_EQ(port, 443);
}

TEST(Module, the_segmenter_starts_without_a_path_set) {
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, Orlec::LocateMgr::pins()->get_dict_path(false));
  EXPECT_EQ(HJieba::pins()->Init(), 0);
}

TEST(Module, the_update_selector_of_k_means_is_1_at_load) {
  EXPECT_EQ(gi_K_ClusterType, 1);
}

TEST(Module, the_index_of_boxes_lies_in_the_directory_of_boxes) {
  EXPECT_EQ(HFileClusterBoxIni::mstr_box_ini,
            Orlec::LocateMgr::pins()->get_box_path(true) + L"box.ini");
}

TEST(Module, the_dna_length_is_32_at_load) {
  EXPECT_EQ(HFileDNA::get_dna_length(), 32);
}

}  // namespace
