#include "shards/shard_merge.h"

#include <algorithm>
#include <utility>

#include <sys/resource.h>

#include "morvaai.h"

#include "shards/shard_error.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

std::string shown(std::string const& path) {
  return printable(morvabs::from_path(path));
}

// As many files may be open as the system lets this user have: programs that cannot do with many
// are why it is less until one asks.
void allow_many_files() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

// The greatest folder name that both begin with.
std::string shared_folder(std::string const& a, std::string const& b) {
  auto const differs = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
  std::string shared(a.begin(), differs);
  std::size_t const slash = shared.rfind('/');
  shared.resize(slash == std::string::npos ? 0 : slash + 1);
  return shared;
}

}  // namespace

struct MergedShards::Source {
  explicit Source(std::string const& path) : reader(path) {}

  ShardReader reader;
  ShardRecord record;
};

MergedShards::MergedShards(std::vector<std::string> const& paths) {
  allow_many_files();
  for (std::string const& path : paths) {
    auto source = std::make_unique<Source>(path);
    std::string const& origin = source->reader.origin();
    if (&path == paths.data()) {
      origin_ = origin;
    } else if (origin != origin_) {
      throw ShardError(path, "made by another version or dictionary (" +
                                 printable(HString(origin.c_str())) + ") than " +
                                 shown(paths.front()) + " (" + printable(HString(origin_.c_str())) +
                                 "); extract one again");
    }
    record_count_ += source->reader.totals().documents;
    if (auto last = source->reader.last_path(); last && !path_before(*last, last_path_)) {
      last_path_ = std::move(*last);
    }
    advance(std::move(source));
  }
  if (!sources_.empty()) {
    first_path_ = sources_.front()->record.path;
  }
}

MergedShards::~MergedShards() = default;

std::string const& MergedShards::origin() const {
  return origin_;
}

std::string MergedShards::common_folder() const {
  // What lies between two paths in their order begins as both do.
  return shared_folder(first_path_, last_path_);
}

bool MergedShards::is_later(std::unique_ptr<Source> const& a, std::unique_ptr<Source> const& b) {
  return path_before(b->record.path, a->record.path);
}

std::unique_ptr<MergedShards::Source> MergedShards::take_first() {
  std::pop_heap(sources_.begin(), sources_.end(), &is_later);
  std::unique_ptr<Source> first = std::move(sources_.back());
  sources_.pop_back();
  return first;
}

// One that is at its end is closed.
void MergedShards::advance(std::unique_ptr<Source> source) {
  if (source->reader.next(source->record)) {
    sources_.push_back(std::move(source));
    std::push_heap(sources_.begin(), sources_.end(), &is_later);
  }
}

bool MergedShards::next(ShardRecord& record) {
  if (sources_.empty()) {
    return false;
  }
  std::unique_ptr<Source> first = take_first();
  std::swap(record, first->record);
  std::string const from = first->reader.path();
  advance(std::move(first));
  while (!sources_.empty() && sources_.front()->record.path == record.path) {
    std::unique_ptr<Source> other = take_first();
    if (!(other->record == record)) {
      throw ShardError(record.path, "is in " + shown(from) + " and in " +
                                        shown(other->reader.path()) +
                                        ", with other contents; extract it again in one of them");
    }
    advance(std::move(other));
  }
  return true;
}

void MergedShards::take_all(std::function<void(ShardRecord const&)> const& take) {
  Progress const progress(record_count_, "documents");
  // To show a path takes longer than to read its record.
  constexpr std::uint64_t between = 256;
  ShardRecord record;
  for (std::uint64_t done = 1; next(record); ++done) {
    take(record);
    if (done % between == 0) {
      progress.show(done, morvabs::from_path(record.path));
    }
  }
}

}  // namespace tool
