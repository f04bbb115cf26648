#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-output.h>

namespace test {

/// An OLE2 container with the given streams.
inline std::string make_ole(std::vector<std::pair<std::string, std::string>> const& streams) {
  auto* const memory = gsf_output_memory_new();
  auto* const root = gsf_outfile_msole_new(memory);
  for (auto const& [name, content] : streams) {
    auto* const stream = gsf_outfile_new_child(root, name.c_str(), FALSE);
    gsf_output_write(stream, content.size(), reinterpret_cast<guint8 const*>(content.data()));
    gsf_output_close(stream);
    g_object_unref(stream);
  }
  gsf_output_close(static_cast<GsfOutput*>(static_cast<void*>(root)));
  auto const size = static_cast<std::size_t>(gsf_output_size(memory));
  auto const* const bytes =
      gsf_output_memory_get_bytes(static_cast<GsfOutputMemory*>(static_cast<void*>(memory)));
  std::string container(reinterpret_cast<char const*>(bytes), size);
  g_object_unref(root);
  g_object_unref(memory);
  return container;
}

}  // namespace test
