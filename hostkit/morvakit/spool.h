#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvabs/file_access.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// The bytes of an embedded file, unpacked: in memory as long as they are few or there is no place
/// for a temporary file, else in one without a name, which is gone with its last user whatever
/// happens.
class Spool final : public Orlec::Reader {
 public:
  /// `name`: what the file is called in its container, in UTF-8, directories included; a hint for
  /// recognition and the name in reasons, never a name on the disk.
  Spool(std::string_view name, ReadContext& context);

  /// Adds bytes at the end. False when no more are wanted: the context has ended, or the file is
  /// over `ParseLimits::i_input_bytes`, which is noted, or there is no room on the disk, noted too.
  bool append(std::string_view bytes);

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override;
  std::int64_t GetSize() const override { return size_; }
  HString const& GetPath() const override { return name_; }

 private:
  /// Whether that many bytes are, or belong, in a file. There is asked for one once.
  bool is_in_file(std::int64_t size);
  bool write_to_file(std::string_view bytes);
  bool refuse(std::string const& why, Orlec::ParseOutcome outcome);

  ReadContext& context_;
  HString name_;
  std::string memory_;
  morvabs::FileDescriptor file_;
  bool has_outgrown_memory_ = false;
  std::int64_t size_ = 0;
};

/// A part of another reader's bytes, such as the member of a container that is not packed. The
/// other reader has to outlive it.
class ReaderSlice final : public Orlec::Reader {
 public:
  ReaderSlice(Orlec::Reader const& whole, std::string_view name, std::int64_t offset,
              std::int64_t size);

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override;
  std::int64_t GetSize() const override { return size_; }
  HString const& GetPath() const override { return name_; }

 private:
  Orlec::Reader const& whole_;
  HString name_;
  std::int64_t offset_;
  std::int64_t size_;
};

}  // namespace morvakit
