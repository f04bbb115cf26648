#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

#include "tessarine/zip_archive.h"

namespace morvakit {

/// The parts of a ZIP container, unpacked in pieces. Nothing of it is ever mapped into memory or
/// written to disk, and names are only compared: "../" in one has no effect.
class ZipContainer {
 public:
  enum class Directory { needed, may_be_broken };

  /// Reads the directory. Ends the context where there is none that can be read, unless it may be
  /// broken, and where it has too many entries.
  ZipContainer(Orlec::Reader const& reader, ReadContext& context,
               Directory directory = Directory::needed);
  ZipContainer(ZipContainer const&) = delete;
  ZipContainer& operator=(ZipContainer const&) = delete;

  bool is_open() const;
  std::uint64_t count() const;
  /// The name of an entry as it is stored; empty outside the directory.
  std::string const& name(std::uint64_t index) const;
  /// Size that the directory gives for the unpacked part. A lie is possible: take it as a hint.
  std::int64_t stated_size(std::uint64_t index) const;

  /// The part of that name: exactly, else without regard to the case of ASCII letters, to the
  /// direction of slashes and to one in front.
  std::optional<std::uint64_t> find(std::string_view name) const;

  /// Whether the part can only be unpacked with a password.
  bool is_encrypted(std::uint64_t index) const;

  /// Takes one piece of a part; false to have no more of it.
  using Consumer = std::function<bool(std::string_view bytes)>;
  /// Unpacks a part of a document. True when it was read to its end; a fault is noted in the
  /// context or ends it. A name that stands twice in the directory is noted as damage, and the part
  /// is read all the same.
  bool read(std::uint64_t index, Consumer const& consumer);
  /// Unpacks a file of an archive, where a fault of one, or one name for two, is none of the
  /// others. A fault is noted as `incomplete`, with `shown_name` for the file's name.
  void read_member(std::uint64_t index, std::string_view shown_name, Consumer const& consumer);

 private:
  enum class Unpacking { done, stopped, damaged, unsupported, encrypted };

  void list();
  Unpacking unpack(std::uint64_t index, Consumer const& consumer);

  ReadContext& context_;
  tessarine::ZipArchive archive_;
  std::vector<std::string> names_;
  std::vector<bool> is_doubled_;
  std::unordered_map<std::string_view, std::uint64_t> exact_;
  std::unordered_map<std::string, std::uint64_t> loose_;
};

}  // namespace morvakit
