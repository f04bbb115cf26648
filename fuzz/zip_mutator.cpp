#include <algorithm>
#include <array>
#include <vector>

#include "hostkit/morvakit/zip_writer.h"
#include "hostkit/tessarine/memory_reader.h"

#include "fuzz/mutators.h"
#include "tessarine/zip_archive.h"

namespace fuzz {

namespace {

struct Member {
  std::string name;
  std::string content;
};

constexpr std::size_t largest_member = 256 << 10;
constexpr std::uint64_t most_members = 256;

std::string unpacked(tessarine::ZipArchive const& archive, std::uint64_t index) {
  std::string content;
  std::array<char, 16 << 10> piece{};
  auto part = archive.open(index);
  while (content.size() < largest_member) {
    auto const got = part.read(piece.data(), piece.size());
    if (got <= 0) {
      break;
    }
    content.append(piece.data(), static_cast<std::size_t>(got));
  }
  return content;
}

std::vector<Member> members(std::string const& input) {
  if (!input.starts_with("PK")) {
    return {};
  }
  test::MemoryReader const reader(input, "input");
  tessarine::ZipArchive const archive(reader, {.entries = most_members});
  std::vector<Member> all;
  for (std::uint64_t i = 0; i < archive.count(); ++i) {
    all.push_back({std::string(archive.entry(i).name), unpacked(archive, i)});
  }
  return all;
}

/// Nothing where it is too long.
std::optional<std::string> packed(std::vector<Member> const& all, std::size_t most) {
  constexpr std::size_t worth_packing = 1024;
  ZipWriter zip;
  for (auto const& [name, content] : all) {
    zip.add(name, content, {.deflate = content.size() > worth_packing});
  }
  auto bytes = zip.bytes();
  return bytes.size() <= most ? std::optional(std::move(bytes)) : std::nullopt;
}

/// By content, so that a large member is not changed less often than a small one.
void change(std::vector<Member>& all, std::size_t most, Random& random) {
  enum Change : std::size_t { leave_out, rename, copy, kinds = 32 };
  auto& member = all[pick(random, all.size())];
  switch (pick(random, kinds)) {
    case leave_out:
      std::swap(member, all.back());
      all.pop_back();
      break;
    case rename:
      member.name = mutated(member.name, member.name.size() + 16);
      break;
    case copy:
      member.content = all[pick(random, all.size())].content;
      break;
    default:
      member.content = mutated(member.content, std::min(most, member.content.size() + 1024));
  }
}

}  // namespace

std::optional<std::string> mutate_zip(std::string const& input, std::size_t most, Random& random) {
  auto all = members(input);
  if (all.empty()) {
    return std::nullopt;
  }
  change(all, most, random);
  return packed(all, most);
}

std::optional<std::string> cross_zips(std::string const& input, std::string const& other,
                                      std::size_t most, Random& random) {
  auto all = members(input);
  auto const others = members(other);
  if (all.empty() || others.empty()) {
    return std::nullopt;
  }
  auto const& taken = others[pick(random, others.size())];
  auto const same = std::find_if(all.begin(), all.end(),
                                 [&](Member const& member) { return member.name == taken.name; });
  if (same != all.end()) {
    same->content = taken.content;
  } else {
    all[pick(random, all.size())].content = taken.content;
  }
  return packed(all, most);
}

}  // namespace fuzz
