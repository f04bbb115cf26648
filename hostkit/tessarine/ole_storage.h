#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"
#include "host/export.h"

namespace tessarine {

/// A stream or a storage within a storage.
struct OleEntry {
  /// UTF-8, control characters included.
  std::string name;
  bool is_storage = false;
  /// Bytes of a stream; 0 for a storage.
  std::int64_t size = 0;
};

/// A storage of an OLE2 compound file: the root, or one within another. A value that is cheap to
/// move; the bytes of the file have to outlive all that is made from it. Names are found exactly,
/// else without regard to the case of ASCII letters. Of a directory's
/// entries the first 20000 are there.
class MORVA_EXPORT OleStorage {
 public:
  /// The root of a compound file.
  explicit OleStorage(Orlec::Reader const& file);
  ~OleStorage();
  OleStorage(OleStorage&& other) noexcept;
  OleStorage& operator=(OleStorage&& other) noexcept;
  OleStorage(OleStorage const&) = delete;
  OleStorage& operator=(OleStorage const&) = delete;

  /// False when the directory of the file cannot be read, or there is no such storage; it is empty
  /// then.
  bool is_open() const;
  /// An English phrase for what is wrong with the file's header or directory; empty where nothing
  /// is. What can be reached of a directory that is merely damaged is there, and the storage open.
  std::string fault() const;
  /// Whether the fault is that the directory has too many entries; the first of them are there.
  bool is_over_bound() const;
  /// What the storage holds, in the order of its directory.
  std::vector<OleEntry> entries() const;
  /// Whether it holds a stream or storage of that name.
  bool has(std::string_view name) const;
  /// The storage of that name within this one; not open where there is none.
  OleStorage storage(std::string_view name) const;
  /// Random access to a stream, named by its name; null where there is none. It may outlive the
  /// storage. A chain of sectors that is broken makes reading fail, or fall short. Small reads near
  /// each other cost little; an object serves one thread at a time.
  std::unique_ptr<Orlec::Reader> stream(std::string_view name) const;
  /// First bytes of a stream, `limit` at most; empty where there is none.
  std::string content(std::string_view name, std::int64_t limit) const;

 private:
  struct State;
  explicit OleStorage(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace tessarine
