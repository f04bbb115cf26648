#include "morvajieba/dictionary.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvajieba {

namespace {

constexpr std::size_t tag_bytes = 8;

/// An open file descriptor.
class Descriptor {
 public:
  // Without blocking, so that a pipe put in the dictionary's place cannot hold the process.
  explicit Descriptor(std::string const& path)
      : number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(Descriptor const&) = delete;
  Descriptor& operator=(Descriptor const&) = delete;

  int number() const { return number_; }
  /// Length of a regular file; 0 for anything else.
  std::uint64_t length() const {
    struct stat status {};
    bool const is_file = number_ >= 0 && ::fstat(number_, &status) == 0 && S_ISREG(status.st_mode);
    return is_file && status.st_size > 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

 private:
  int number_;
};

std::uint64_t element_bytes(Section section) {
  switch (section) {
    case section_codes:
      return sizeof(std::uint16_t);
    case section_emission:
      return sizeof(double) * state_count;
    default:
      return sizeof(std::uint64_t);
  }
}

bool has_good_places(DictionaryHeader const& header) {
  for (std::uint32_t number = 0; number < section_count; ++number) {
    SectionPlace const& place = header.sections[number];
    if (place.offset % 64 != 0 || place.offset > header.file_bytes) return false;
    if (place.bytes > header.file_bytes - place.offset) return false;
    if (place.bytes % element_bytes(static_cast<Section>(number)) != 0) return false;
  }
  return true;
}

bool has_good_sizes(DictionaryHeader const& header) {
  auto const count = [&header](Section section) {
    return header.sections[section].bytes / element_bytes(section);
  };
  return count(section_codes) == han_count + 0x80 && count(section_nodes) >= 1 &&
         count(section_nodes) <= Node::no_children &&
         std::has_single_bit(count(section_log_values)) && count(section_log_values) <= 0x10000 &&
         count(section_frequencies) == count(section_log_values) && count(section_tags) <= 0x100 &&
         count(section_emission) == han_count &&
         count(section_model) == std::uint64_t{state_count} * (state_count + 1);
}

bool is_good(DictionaryHeader const& header, std::uint64_t file_bytes) {
  return std::memcmp(header.magic, dictionary_magic, sizeof(dictionary_magic)) == 0 &&
         header.byte_order == dictionary_byte_order && header.version == dictionary_version &&
         header.checksum == header_checksum(header) && header.file_bytes == file_bytes &&
         header.total > 0 && header.longest_word >= 1 && header.longest_word <= longest_word &&
         has_good_places(header) && has_good_sizes(header);
}

/// The header of an open file, if the file can be used.
bool read_header(Descriptor const& file, DictionaryHeader& header) {
  std::uint64_t const length = file.length();
  return length >= sizeof(header) &&
         ::pread(file.number(), &header, sizeof(header), 0) == sizeof(header) &&
         is_good(header, length);
}

}  // namespace

Dictionary::~Dictionary() {
  close();
}

bool Dictionary::is_usable(std::string const& path) {
  DictionaryHeader header;
  return read_header(Descriptor(path), header);
}

template <typename T>
T const* Dictionary::section(Section number) const {
  auto const* const start = reinterpret_cast<std::byte const*>(header_);
  void const* const place = start + header_->sections[number].offset;
  return static_cast<T const*>(place);
}

bool Dictionary::open(std::string const& path) {
  close();
  Descriptor const file(path);
  DictionaryHeader header;
  if (!read_header(file, header)) return false;
  void* const mapping = ::mmap(nullptr, header.file_bytes, PROT_READ, MAP_SHARED, file.number(), 0);
  if (mapping == MAP_FAILED) return false;
  header_ = static_cast<DictionaryHeader const*>(mapping);
  // The file may have changed since its header was checked.
  if (std::memcmp(header_, &header, sizeof(header)) != 0) {
    ::munmap(mapping, header.file_bytes);
    header_ = nullptr;
    return false;
  }
  codes_ = section<std::uint16_t>(section_codes);
  nodes_ = section<Node>(section_nodes);
  node_count_ = static_cast<std::uint32_t>(header.sections[section_nodes].bytes / sizeof(Node));
  log_values_ = section<double>(section_log_values);
  frequencies_ = section<std::uint64_t>(section_frequencies);
  frequency_mask_ = static_cast<std::uint32_t>(
      header.sections[section_frequencies].bytes / sizeof(std::uint64_t) - 1);
  tags_ = section<char>(section_tags);
  tag_count_ = static_cast<std::uint32_t>(header.sections[section_tags].bytes / tag_bytes);
  emission_ = section<double>(section_emission);
  model_ = section<double>(section_model);
  return true;
}

void Dictionary::close() {
  if (header_ == nullptr) return;
  auto const bytes = header_->file_bytes;
  ::munmap(const_cast<DictionaryHeader*>(header_), bytes);
  header_ = nullptr;
}

std::string_view Dictionary::tag(Node node) const {
  if (node.tag() >= tag_count_) return {};
  char const* const first = tags_ + tag_bytes * node.tag();
  return {first, static_cast<std::size_t>(std::find(first, first + tag_bytes, '\0') - first)};
}

}  // namespace morvajieba
