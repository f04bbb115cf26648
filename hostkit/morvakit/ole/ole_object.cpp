#include "morvakit/ole/ole_object.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "morvabs/text_decoder.h"
#include "morvakit/spool.h"
#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;
using tessarine::read_piece;

/// A part of a reader that it keeps.
class OwnedSlice final : public Orlec::Reader {
 public:
  OwnedSlice(std::unique_ptr<Orlec::Reader> whole, std::string_view name, std::int64_t offset,
             std::int64_t size)
      : whole_(std::move(whole)), slice_(*whole_, name, offset, size) {}

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override {
    return slice_.ReadAt(offset, buffer, size);
  }
  std::int64_t GetSize() const override { return slice_.GetSize(); }
  HString const& GetPath() const override { return slice_.GetPath(); }

 private:
  std::unique_ptr<Orlec::Reader> whole_;
  ReaderSlice slice_;
};

/// The best of the names that a package states: one with a suffix, else any. Directories are left
/// out.
std::string best_name(std::vector<std::string> const& candidates) {
  std::string best;
  for (auto const& candidate : candidates) {
    auto const path = candidate.substr(0, candidate.find('\0'));
    auto name = path.substr(path.find_last_of("/\\") + 1);
    if (name.find('.') != std::string::npos) {
      return name;
    }
    if (best.empty()) {
      best = name;
    }
  }
  return best;
}

/// Moves through the fields of a packager's data.
class PackageFields {
 public:
  PackageFields(Orlec::Reader const& data, std::int64_t offset) : data_(data), at_(offset) {}

  std::int64_t at() const { return at_; }
  void skip(std::int64_t size) { at_ += size; }
  std::uint16_t short_number() { return little16(take(2), 0); }
  std::uint32_t number() { return little32(take(4), 0); }

  /// A text that ends in a zero byte; empty where it has no end.
  std::string text() {
    constexpr std::int64_t longest = 2048;
    auto piece = read_piece(data_, at_, longest);
    auto const end = piece.find('\0');
    piece.resize(end == std::string::npos ? 0 : end);
    at_ += static_cast<std::int64_t>(piece.size()) + 1;
    return piece;
  }

  /// A text in UTF-16 with its length, in characters, in front.
  std::string wide_text() {
    constexpr std::uint32_t longest = 2048;
    auto const length = number();
    return length <= longest ? decode_utf16(take(std::int64_t{length} * 2)) : std::string();
  }

 private:
  std::string take(std::int64_t size) {
    auto piece = read_piece(data_, at_, size);
    at_ += size;
    return piece;
  }

  Orlec::Reader const& data_;
  std::int64_t at_;
};

}  // namespace

std::unique_ptr<Orlec::Reader> open_packaged_file(std::unique_ptr<Orlec::Reader> data,
                                                  std::int64_t offset, std::string_view name) {
  constexpr std::uint16_t packaged = 2;
  constexpr std::int64_t flags_size = 4;
  PackageFields fields(*data, offset);
  if (fields.short_number() != packaged) {
    return nullptr;
  }
  auto const label = morvabs::decode_text(fields.text());
  auto const path = morvabs::decode_text(fields.text());
  fields.skip(flags_size);
  fields.skip(fields.number());
  std::int64_t const size = fields.number();
  auto const begin = fields.at();
  if ((label.empty() && path.empty()) || begin > data->GetSize()) {
    return nullptr;
  }
  // The names once more, in Unicode, behind the file.
  fields.skip(size);
  fields.wide_text();
  auto const wide_label = fields.wide_text();
  auto const wide_path = fields.wide_text();
  auto const own_name = best_name({wide_label, wide_path, label, path, std::string(name)});
  return std::make_unique<OwnedSlice>(std::move(data), own_name, begin, size);
}

std::unique_ptr<Orlec::Reader> open_wrapped_file(tessarine::OleStorage const& storage,
                                                 std::string_view name) {
  constexpr std::array whole_files{"Package", "CONTENTS", "Contents", "EmbeddedOdf",
                                   "package_stream"};
  for (auto const* const stream_name : whole_files) {
    if (auto stream = storage.stream(stream_name); stream != nullptr) {
      auto const size = stream->GetSize();
      return std::make_unique<OwnedSlice>(std::move(stream), name, 0, size);
    }
  }
  auto native = storage.stream("\1Ole10Native");
  if (native == nullptr) {
    return nullptr;
  }
  constexpr std::int64_t length_size = 4;
  std::int64_t const size = little32(read_piece(*native, 0, length_size), 0);
  if (auto packaged = open_packaged_file(storage.stream("\1Ole10Native"), length_size, name);
      packaged != nullptr) {
    return packaged;
  }
  return std::make_unique<OwnedSlice>(std::move(native), name, length_size, size);
}

}  // namespace morvakit
