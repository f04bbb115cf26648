#include "morvakit/ppt/ppt_directory.h"

#include <algorithm>
#include <string>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little32;

// Places of the fields of an edit.
constexpr std::int64_t edit_former = 8;
constexpr std::int64_t edit_places = 12;
constexpr std::int64_t edit_document = 16;
constexpr std::int64_t edit_encryption = 28;

/// What one object costs in a map.
constexpr std::size_t kept_per_object = 32;

}  // namespace

PptDirectory::PptDirectory(PptStream& stream, std::string_view current_user) : stream_(stream) {
  constexpr std::size_t place_of_edit = 16;
  auto const newest = little32(current_user, place_of_edit);
  auto edit = edit_at(newest);
  if (!edit) {
    edit = last_edit();
    if (newest != 0) {
      stream_.context().note(Orlec::ParseOutcome::damaged,
                             "the newest list of the presentation's objects is missing");
    }
  }
  if (edit) {
    document_ = stream_.number(*edit, edit_document);
    encryption_ = stream_.number(*edit, edit_encryption);
    follow(*edit);
  }
}

std::optional<PptRecord> PptDirectory::edit_at(std::int64_t offset) const {
  auto const record = stream_.record_at(offset);
  return record && record->type == ppt::user_edit ? record : std::nullopt;
}

std::optional<PptRecord> PptDirectory::last_edit() const {
  std::optional<PptRecord> last;
  auto record = stream_.record_at(0);
  while (record && stream_.context().keep_going()) {
    if (record->type == ppt::user_edit) {
      last = record;
    }
    record = stream_.record_at(record->end());
  }
  return last;
}

void PptDirectory::follow(PptRecord edit) {
  bool is_whole = true;
  while (stream_.context().keep_going()) {
    is_whole = add_places(stream_.number(edit, edit_places)) && is_whole;
    auto const former = std::int64_t{stream_.number(edit, edit_former)};
    if (former == 0) {
      break;
    }
    // What is older lies in front, so that no chain runs in a circle.
    auto const next = edit_at(former);
    if (!next || next->offset >= edit.offset) {
      is_whole = false;
      break;
    }
    edit = *next;
  }
  if (!is_whole) {
    stream_.context().note(Orlec::ParseOutcome::damaged,
                           "the lists of the presentation's objects are broken");
  }
}

/// A list has runs of objects: the first number and the length in one, then the places.
bool PptDirectory::add_places(std::int64_t offset) {
  constexpr std::uint32_t number_bits = 20;
  constexpr std::uint32_t number_mask = (1U << number_bits) - 1;
  constexpr std::int64_t word = 4;
  auto const list = stream_.record_at(offset);
  if (!list || list->type != ppt::persist_directory) {
    return false;
  }
  // Lists that together are longer than the stream lie on each other.
  listed_bytes_ += list->size;
  if (listed_bytes_ > stream_.size()) {
    return false;
  }
  for (std::int64_t at = 0; at + word <= list->size && stream_.context().keep_going();) {
    auto const run = stream_.number(*list, at);
    auto const number = run & number_mask;
    auto const count = run >> number_bits;
    at += word;
    for (std::uint32_t i = 0; i < count && at + word <= list->size; ++i, at += word) {
      auto const place = stream_.number(*list, at);
      if (places_.try_emplace(number + i, place).second &&
          !stream_.context().charge_memory(kept_per_object)) {
        return false;
      }
    }
  }
  return true;
}

std::optional<PptRecord> PptDirectory::document() const {
  return find(document_, ppt::document);
}

std::optional<PptRecord> PptDirectory::find(std::uint32_t number, std::uint16_t type) const {
  auto const place = places_.find(number);
  auto const record =
      place == places_.end() ? std::nullopt : stream_.record_at(std::int64_t{place->second});
  return record && record->type == type ? record : std::nullopt;
}

bool PptDirectory::is_encrypted() const {
  return encryption_ != 0 && find(encryption_, ppt::encryption).has_value();
}

}  // namespace morvakit
