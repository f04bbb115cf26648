#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

/// An open file descriptor, closed at the end of its scope.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;

  int get() const { return number_; }
  bool is_open() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

/// A regular file that is read at any place. All that fails is a ShardError.
class InputFile {
 public:
  explicit InputFile(std::string path);

  std::string const& path() const { return path_; }
  std::uint64_t size() const { return size_; }
  /// So many bytes from that offset, which the file had when it was opened.
  std::string read(std::uint64_t offset, std::size_t size) const;

 private:
  std::string path_;
  Descriptor descriptor_;
  std::uint64_t size_ = 0;
};

/// A file that only this process writes, and that stays locked (flock) for as long: another that
/// wants to write it fails, a killed one leaves it. Paths are bytes, permissions as the umask has
/// them, but never for everyone to write. All that fails is a ShardError.
class LockedFile {
 public:
  /// Opens the file, which is made where there is none. A symbolic link is refused.
  explicit LockedFile(std::string path);

  std::string const& path() const { return path_; }
  /// Less than asked for only at the end of the file.
  std::string read(std::uint64_t offset, std::size_t size) const;
  /// All bytes, or none: what was written of them before it failed is cut off again.
  void write(std::uint64_t offset, std::string_view bytes);
  void truncate(std::uint64_t size);
  /// Syncs the file and renames it to that name. Takes the permissions of a file that is there;
  /// replaces what a symbolic link leads to.
  void move_to(std::string const& path);
  void remove();

 private:
  std::string path_;
  Descriptor descriptor_;
};

}  // namespace tool
