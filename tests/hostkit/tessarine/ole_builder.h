#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-output.h>

namespace test {

/// Writes a stream; a name with a '/' stands for one in a storage.
class OleWriter {
 public:
  explicit OleWriter(GsfOutput* sink) { open_.push_back({"", gsf_outfile_msole_new(sink)}); }
  ~OleWriter() { close_down_to(0); }
  OleWriter(OleWriter const&) = delete;
  OleWriter& operator=(OleWriter const&) = delete;

  void add(std::string_view name, std::string_view content) {
    std::size_t depth = 1;
    for (auto slash = name.find('/'); slash != std::string_view::npos; slash = name.find('/')) {
      enter(depth++, std::string(name.substr(0, slash)));
      name.remove_prefix(slash + 1);
    }
    close_down_to(depth);
    auto* const stream =
        gsf_outfile_new_child(open_.back().second, std::string(name).c_str(), FALSE);
    gsf_output_write(stream, content.size(), reinterpret_cast<guint8 const*>(content.data()));
    gsf_output_close(stream);
    g_object_unref(stream);
  }

 private:
  /// The storage at a depth; streams of one storage have to follow each other.
  void enter(std::size_t depth, std::string const& name) {
    if (depth < open_.size() && open_[depth].first == name) {
      return;
    }
    close_down_to(depth);
    auto* const storage = gsf_outfile_new_child(open_.back().second, name.c_str(), TRUE);
    open_.push_back({name, static_cast<GsfOutfile*>(static_cast<void*>(storage))});
  }
  void close_down_to(std::size_t depth) {
    while (open_.size() > depth) {
      gsf_output_close(static_cast<GsfOutput*>(static_cast<void*>(open_.back().second)));
      g_object_unref(open_.back().second);
      open_.pop_back();
    }
  }

  std::vector<std::pair<std::string, GsfOutfile*>> open_;
};

/// An OLE2 container with the given streams; a name as "a/b" puts a stream into a storage.
inline std::string make_ole(std::vector<std::pair<std::string, std::string>> const& streams) {
  auto* const memory = gsf_output_memory_new();
  {
    OleWriter writer(memory);
    for (auto const& [name, content] : streams) {
      writer.add(name, content);
    }
  }
  auto const size = static_cast<std::size_t>(gsf_output_size(memory));
  auto const* const bytes =
      gsf_output_memory_get_bytes(static_cast<GsfOutputMemory*>(static_cast<void*>(memory)));
  std::string container(reinterpret_cast<char const*>(bytes), size);
  g_object_unref(memory);
  return container;
}

}  // namespace test
