#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "box/HFileClusterBoxIni.h"
#include "host/HFileLog.h"

#include "fuzz/require.h"
#include "fuzz/wide_text.h"
#include "support/temporary_directory.h"

// The index of boxes, out of any bytes: an entry that is written comes back, one that is deleted is
// gone, and the others stay as they were.

namespace {

using fuzz::require;
using Node = HClusterBoxLocalNode;
using Nodes = std::vector<Node>;

test::TemporaryDirectory const& directory() {
  static test::TemporaryDirectory const one;
  return one;
}

Nodes all() {
  Nodes nodes;
  HFileClusterBoxIni::read_local_box_node(nodes);
  return nodes;
}

/// The entries of all other boxes, as text.
std::vector<HString> others(Nodes const& nodes, HString const& id) {
  std::vector<HString> texts;
  for (Node const& node : nodes) {
    if (!(node.str_box_id == id)) {
      texts.push_back(node.to_str());
    }
  }
  return texts;
}

Node const* find(Nodes const& nodes, HString const& id) {
  auto const found = std::find_if(nodes.begin(), nodes.end(),
                                  [&id](Node const& node) { return node.str_box_id == id; });
  return found == nodes.end() ? nullptr : &*found;
}

void check_written(Node const& node) {
  std::vector<HString> const before = others(all(), node.str_box_id);
  HFileClusterBoxIni::write_local_box_node(node);
  Nodes const nodes = all();
  Node const* const entry = find(nodes, node.str_box_id);
  require(entry != nullptr, "an entry that is written is there");
  require(entry->str_box_md5 == node.str_box_md5, "an MD5 comes back");
  require(HString(entry->vt_class_id) == HString(node.vt_class_id), "the classes come back");
  require(others(nodes, node.str_box_id) == before, "the other entries stay");
  Node alone;
  HFileClusterBoxIni::read_local_box_node(node.str_box_id, alone);
  alone.str_box_id = node.str_box_id;
  require(alone.to_str() == entry->to_str(), "an entry alone is what it is among all");
}

void check_deleted(HString const& id) {
  std::vector<HString> const before = others(all(), id);
  HFileClusterBoxIni::delete_local_box_node(id);
  Nodes const nodes = all();
  require(find(nodes, id) == nullptr, "an entry that is deleted is gone");
  require(others(nodes, id) == before, "the other entries stay");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  HFileLog::ins()->mi_level = 0;
  // Each step waits until the index is on disk.
  if (std::filesystem::is_directory("/dev/shm")) {
    setenv("TMPDIR", "/dev/shm", 1);
  }
  HFileClusterBoxIni::mstr_box_ini = directory() / "box.ini";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  Node node;
  node.str_box_id = fuzz::any_string(input.ConsumeRandomLengthString(16));
  node.str_box_md5 = fuzz::any_string(input.ConsumeRandomLengthString(16));
  node.vt_class_id.resize(input.ConsumeIntegralInRange<std::size_t>(0, 3));
  for (HString& id : node.vt_class_id) {
    id = fuzz::any_string(input.ConsumeRandomLengthString(8));
  }
  directory().write("box.ini", input.ConsumeRemainingBytesAsString());
  Nodes const nodes = all();
  HString const present = nodes.empty() ? HString() : nodes.back().str_box_id;
  check_written(node);
  check_deleted(present);
  check_deleted(node.str_box_id);
  return 0;
}
