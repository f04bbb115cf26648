#include <array>
#include <memory>

#include <archive.h>
#include <archive_entry.h>

#include "fuzz/mutators.h"

namespace fuzz {

namespace {

constexpr std::size_t largest = 256 << 10;

struct Packing {
  int filter = ARCHIVE_FILTER_NONE;
  std::string content;
};

bool is_packed(std::string const& input) {
  return input.starts_with("\x1f\x8b") || input.starts_with("BZh") ||
         input.starts_with(
             "\xfd"
             "7zXZ") ||
         input.starts_with("\x28\xb5\x2f\xfd");
}

/// A filter of none where the bytes cannot be unpacked at all.
Packing unpacked(std::string const& input) {
  std::unique_ptr<archive, decltype(&archive_read_free)> const reader(archive_read_new(),
                                                                      archive_read_free);
  archive_read_support_filter_all(reader.get());
  archive_read_support_format_raw(reader.get());
  archive_entry* entry = nullptr;
  if (archive_read_open_memory(reader.get(), input.data(), input.size()) != ARCHIVE_OK ||
      archive_read_next_header(reader.get(), &entry) != ARCHIVE_OK) {
    return {};
  }
  Packing packing{archive_filter_code(reader.get(), 0), {}};
  std::array<char, 16 << 10> piece{};
  while (packing.content.size() < largest) {
    auto const got = archive_read_data(reader.get(), piece.data(), piece.size());
    if (got <= 0) {
      break;
    }
    packing.content.append(piece.data(), static_cast<std::size_t>(got));
  }
  return packing;
}

std::optional<std::string> packed(Packing const& packing, std::size_t most) {
  std::unique_ptr<archive, decltype(&archive_write_free)> const writer(archive_write_new(),
                                                                       archive_write_free);
  std::unique_ptr<archive_entry, decltype(&archive_entry_free)> const entry(archive_entry_new(),
                                                                            archive_entry_free);
  std::string bytes(most, '\0');
  std::size_t used = 0;
  archive_write_add_filter(writer.get(), packing.filter);
  // The best packing would take more memory than all that is tested.
  archive_write_set_filter_option(writer.get(), nullptr, "compression-level", "1");
  archive_write_set_format_raw(writer.get());
  archive_write_set_bytes_in_last_block(writer.get(), 1);
  archive_entry_set_filetype(entry.get(), AE_IFREG);
  archive_entry_set_pathname(entry.get(), "content");
  bool const is_written =
      archive_write_open_memory(writer.get(), bytes.data(), bytes.size(), &used) == ARCHIVE_OK &&
      archive_write_header(writer.get(), entry.get()) == ARCHIVE_OK &&
      archive_write_data(writer.get(), packing.content.data(), packing.content.size()) >= 0 &&
      archive_write_close(writer.get()) == ARCHIVE_OK;
  bytes.resize(used);
  return is_written ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace

std::optional<std::string> mutate_packed(std::string const& input, std::size_t most) {
  if (!is_packed(input)) {
    return std::nullopt;
  }
  auto packing = unpacked(input);
  if (packing.filter == ARCHIVE_FILTER_NONE) {
    return std::nullopt;
  }
  packing.content = mutated(packing.content, packing.content.size() + 1024);
  return packed(packing, most);
}

}  // namespace fuzz
