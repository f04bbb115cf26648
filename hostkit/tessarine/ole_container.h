#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"

namespace tessarine {

/// The streams of an OLE2 compound file.
class OleContainer {
 public:
  /// The reader has to outlive the container.
  explicit OleContainer(Orlec::Reader const& reader);
  ~OleContainer();
  OleContainer(OleContainer const&) = delete;
  OleContainer& operator=(OleContainer const&) = delete;

  /// False when the directory of the container cannot be read; it is empty then.
  bool is_open() const;
  /// Whether the root holds a stream or storage of that name (UTF-8, control characters included).
  bool has(std::string_view name) const;
  /// First bytes of a stream of the root, `limit` at most; empty where there is none.
  std::string content(std::string_view name, std::int64_t limit) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tessarine
