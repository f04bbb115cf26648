#include "tessarine/ole_storage.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "tessarine/byte_reader.h"
#include "tessarine/compound_file.h"

namespace tessarine {
namespace {

using SharedFile = std::shared_ptr<CompoundFile const>;

class StreamReader final : public Orlec::Reader {
 public:
  StreamReader(SharedFile file, CompoundEntry const& entry)
      : file_(std::move(file)),
        chain_(file_->open(entry)),
        size_(entry.size),
        name_(entry.name.c_str()) {}

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override {
    if (offset < 0 || offset >= size_ || size <= 0) {
      return 0;
    }
    auto const count = std::min(size, size_ - offset);
    auto const got = chain_.read(offset, static_cast<char*>(buffer), count);
    return got > 0 ? got : -1;
  }
  std::int64_t GetSize() const override { return size_; }
  HString const& GetPath() const override { return name_; }

 private:
  SharedFile file_;
  mutable SectorChain chain_;
  std::int64_t size_;
  HString name_;
};

}  // namespace

struct OleStorage::State {
  SharedFile file;
  /// The storage's own entry; none where it is not open.
  CompoundEntry const* entry = nullptr;
  std::unordered_map<std::string_view, CompoundEntry const*> by_name;
  std::unordered_map<std::string, CompoundEntry const*> by_lower_name;

  State() = default;
  State(SharedFile whole, CompoundEntry const& storage) : file(std::move(whole)), entry(&storage) {
    for (auto const child : storage.children) {
      auto const& found = file->entries()[child];
      by_name.try_emplace(found.name, &found);
      by_lower_name.try_emplace(ascii_lower(found.name), &found);
    }
  }

  CompoundEntry const* find(std::string_view name) const {
    if (auto const found = by_name.find(name); found != by_name.end()) {
      return found->second;
    }
    auto const found = by_lower_name.find(ascii_lower(name));
    return found == by_lower_name.end() ? nullptr : found->second;
  }
};

OleStorage::OleStorage(Orlec::Reader const& file) {
  auto whole = std::make_shared<CompoundFile const>(file);
  if (whole->is_open()) {
    auto const& root = whole->entries().front();
    state_ = std::make_unique<State>(std::move(whole), root);
  } else {
    state_ = std::make_unique<State>();
    state_->file = std::move(whole);
  }
}

OleStorage::OleStorage(std::unique_ptr<State> state) : state_(std::move(state)) {}
OleStorage::~OleStorage() = default;
OleStorage::OleStorage(OleStorage&& other) noexcept = default;
OleStorage& OleStorage::operator=(OleStorage&& other) noexcept = default;

bool OleStorage::is_open() const {
  return state_->entry != nullptr;
}

std::string OleStorage::fault() const {
  return state_->file == nullptr ? std::string("there is no such storage") : state_->file->fault();
}

bool OleStorage::is_over_bound() const {
  return state_->file != nullptr && state_->file->is_over_bound();
}

std::vector<OleEntry> OleStorage::entries() const {
  std::vector<OleEntry> entries;
  if (is_open()) {
    for (auto const child : state_->entry->children) {
      auto const& entry = state_->file->entries()[child];
      entries.push_back({entry.name, entry.is_storage, entry.is_storage ? 0 : entry.size});
    }
  }
  return entries;
}

bool OleStorage::has(std::string_view name) const {
  return state_->find(name) != nullptr;
}

OleStorage OleStorage::storage(std::string_view name) const {
  auto const* const found = state_->find(name);
  return OleStorage(found != nullptr && found->is_storage
                        ? std::make_unique<State>(state_->file, *found)
                        : std::make_unique<State>());
}

std::unique_ptr<Orlec::Reader> OleStorage::stream(std::string_view name) const {
  auto const* const found = state_->find(name);
  if (found == nullptr || found->is_storage) {
    return nullptr;
  }
  return std::make_unique<StreamReader>(state_->file, *found);
}

std::string OleStorage::content(std::string_view name, std::int64_t limit) const {
  auto const found = stream(name);
  return found == nullptr ? std::string{} : read_piece(*found, 0, limit);
}

}  // namespace tessarine
