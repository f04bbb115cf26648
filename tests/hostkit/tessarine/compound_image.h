#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/tessarine/memory_reader.h"

namespace test {

/// An OLE2 file put together sector by sector, so that each of its numbers may be wrong.
class CompoundImage {
 public:
  static constexpr std::uint32_t none = 0xffffffff;
  static constexpr std::uint32_t chain_end = 0xfffffffe;
  static constexpr std::size_t sector_size = 512;
  enum Type : std::uint8_t { unused = 0, storage = 1, stream = 2, root = 5 };

  struct Entry {
    std::string name;
    Type type = stream;
    std::uint32_t first_sector = chain_end;
    std::uint64_t size = 0;
    std::uint32_t left = none;
    std::uint32_t right = none;
    std::uint32_t child = none;
  };

  /// The directory; entry 0 is the root.
  std::vector<Entry> entries{{"Root Entry", root}};
  /// What stands behind each sector in its chain.
  std::vector<std::uint32_t> next;
  std::uint32_t directory = none;
  std::uint32_t small_table = chain_end;

  /// Adds sectors that hold the bytes; the first one's number. With `backwards` they lie in the
  /// file in reverse order.
  std::uint32_t add_chain(std::string bytes, bool backwards = false) {
    bytes.resize((bytes.size() + sector_size - 1) / sector_size * sector_size, '\0');
    auto const count = bytes.size() / sector_size;
    auto const first = static_cast<std::uint32_t>(next.size());
    for (std::size_t i = 0; i < count; ++i) {
      auto const source = backwards ? count - 1 - i : i;
      sectors_ += bytes.substr(source * sector_size, sector_size);
      auto const here = static_cast<std::uint32_t>(next.size());
      bool const is_last = source + 1 == count;
      next.push_back(is_last ? chain_end : backwards ? here - 1 : here + 1);
    }
    return backwards ? first + static_cast<std::uint32_t>(count) - 1 : first;
  }

  /// Adds a stream of 4096 bytes or more to the root, behind those added before.
  void add_stream(std::string const& name, std::string const& bytes, bool backwards = false) {
    link({name, stream, add_chain(bytes, backwards), bytes.size()});
  }
  /// Hangs an entry behind the last one.
  void link(Entry entry) {
    auto const number = static_cast<std::uint32_t>(entries.size());
    (number == 1 ? entries.front().child : entries.back().right) = number;
    entries.push_back(std::move(entry));
  }
  /// Puts the directory into sectors, from when on only its chain can be changed.
  void place_directory() {
    std::string bytes;
    for (auto const& entry : entries) {
      bytes += entry_bytes(entry);
    }
    directory = add_chain(bytes);
  }

  std::string bytes() {
    if (directory == none) {
      place_directory();
    }
    auto const used = next.size();
    std::size_t tables = 0;
    std::size_t lists = 0;
    while ((used + tables + lists) * 4 > tables * sector_size) {
      ++tables;
      lists = tables > 109 ? (tables - 109 + 126) / 127 : 0;
    }
    std::string table;
    for (auto const number : next) {
      table += little(number, 4);
    }
    table.resize(tables * sector_size, '\xff');
    return header(used, tables, lists) + sectors_ + table + list_sectors(used, tables);
  }

 private:
  static std::string entry_bytes(Entry const& entry) {
    std::string bytes;
    for (char const character : entry.name) {
      bytes += character;
      bytes += '\0';
    }
    auto const name_size = bytes.size() + 2;
    bytes.resize(64, '\0');
    return bytes + little(name_size, 2) + little(entry.type, 1) + little(1, 1) +
           little(entry.left, 4) + little(entry.right, 4) + little(entry.child, 4) +
           std::string(36, '\0') + little(entry.first_sector, 4) + little(entry.size, 8);
  }

  std::string header(std::size_t used, std::size_t tables, std::size_t lists) const {
    auto bytes = little(0xe11ab1a1e011cfd0, 8) + std::string(16, '\0') + little(0x3e, 2) +
                 little(3, 2) + little(0xfffe, 2) + little(9, 2) + little(6, 2) +
                 std::string(10, '\0') + little(tables, 4) + little(directory, 4) + little(0, 4) +
                 little(4096, 4) + little(small_table, 4) + little(1, 4) +
                 little(lists != 0 ? used + tables : chain_end, 4) + little(lists, 4);
    for (std::size_t i = 0; i < 109; ++i) {
      bytes += little(i < tables ? used + i : none, 4);
    }
    return bytes;
  }

  static std::string list_sectors(std::size_t used, std::size_t tables) {
    std::string bytes;
    for (std::size_t known = 109; known < tables; known += 127) {
      for (auto i = known; i < known + 127; ++i) {
        bytes += little(i < tables ? used + i : none, 4);
      }
      bool const is_last = known + 127 >= tables;
      bytes += little(is_last ? chain_end : used + tables + bytes.size() / sector_size + 1, 4);
    }
    return bytes;
  }

  std::string sectors_;
};

}  // namespace test
