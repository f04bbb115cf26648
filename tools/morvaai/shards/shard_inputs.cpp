#include "shards/shard_inputs.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include <sys/stat.h>

#include "morvaai.h"

#include "documents/inputs.h"
#include "shards/checksum.h"
#include "shards/shard_names.h"
#include "shards/shard_record.h"
#include "terminal/output.h"

namespace tool {

namespace {

bool read_number(std::string_view text, std::uint64_t& number) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

using FileNumber = std::pair<dev_t, ino_t>;

std::optional<FileNumber> number_of(std::string const& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::optional(FileNumber(status.st_dev, status.st_ino))
                                          : std::nullopt;
}

// The shard and what stands beside it on the way there.
std::set<FileNumber> own_files(std::string const& shard) {
  std::set<FileNumber> own;
  for (std::string const& path : {shard, new_shard_of(shard), journal_of(shard)}) {
    if (auto const number = number_of(path)) {
      own.insert(*number);
    }
  }
  return own;
}

}  // namespace

std::optional<Part> part_of(std::string const& text) {
  std::string_view const view = text;
  std::size_t const slash = view.find('/');
  Part part;
  if (slash == std::string_view::npos || !read_number(view.substr(0, slash), part.index) ||
      !read_number(view.substr(slash + 1), part.count) || part.index < 1 ||
      part.index > part.count || part.count > most_parts) {
    return std::nullopt;
  }
  return part;
}

bool is_in_part(std::string const& path, Part const& part) {
  return checksum_of(path) % part.count == part.index - 1;
}

std::vector<ShardInput> shard_inputs(std::vector<std::string> const& arguments, Part const& part,
                                     std::string const& shard, std::size_t& refused) {
  std::vector<std::string> paths;
  for (HString const& file : expand_inputs(arguments)) {
    std::optional<std::string> path = morvabs::to_path(file);
    if (!path || path->empty() || path->size() > longest_path) {
      complain(printable(file.get_first(100)) + "...: no path of a file, or longer than " +
               std::to_string(longest_path) + " bytes; left out");
      ++refused;
    } else if (is_in_part(*path, part)) {
      paths.push_back(std::move(*path));
    }
  }
  std::sort(paths.begin(), paths.end(), &path_before);
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  std::set<FileNumber> const own = own_files(shard);
  std::vector<ShardInput> inputs;
  inputs.reserve(paths.size());
  for (std::string& path : paths) {
    auto const number = number_of(path);
    if (!number || own.count(*number) == 0) {
      FileStamp const stamp = FileStamp::of(path);
      inputs.push_back({std::move(path), stamp});
    }
  }
  return inputs;
}

}  // namespace tool
