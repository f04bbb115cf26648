#include "host/Orlec/TextCallback.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <system_error>

#include "host/Orlec/Global.h"
#include "host/Orlec/ParseLimits.h"
#include "host/native_path.h"
#include "host/utf8.h"
#include "morvabs/atomic_file.h"

namespace Orlec {

namespace {

constexpr std::size_t kind_count = ParseTextType_other + 1;

bool is_kind(ParseTextType type) {
  return type >= ParseTextType_main && type <= ParseTextType_other;
}

constexpr std::size_t slice_bytes = std::size_t{1} << 20;

/// Appends at most `room` characters; false when some did not fit. In slices, so that a huge piece
/// costs no more memory than what is kept of it.
bool append_within(std::wstring& text, std::string_view utf8, std::int64_t& room) {
  while (!utf8.empty()) {
    auto length = morvabs::complete_utf8_prefix(utf8.substr(0, slice_bytes));
    if (length == 0) {
      length = std::min(utf8.size(), slice_bytes);
    }
    auto const old_size = text.size();
    morvabs::append_wide(text, utf8.substr(0, length));
    room -= static_cast<std::int64_t>(text.size() - old_size);
    if (room < 0) {
      text.resize(text.size() - static_cast<std::size_t>(-room));
      room = 0;
      return false;
    }
    utf8.remove_prefix(length);
  }
  return true;
}

/// A text that has become long gets the address space for all that it may become: pages that are
/// not written cost nothing, while growing by doubling would need half as much again.
void make_room(std::wstring& text, std::int64_t limit) {
  constexpr std::size_t long_text = std::size_t{1} << 18;
  constexpr std::int64_t most = std::int64_t{16} << 20;
  // The slice that goes over the limit is appended before it is cut.
  auto const wanted =
      static_cast<std::size_t>(std::clamp<std::int64_t>(limit, 0, most)) + slice_bytes;
  if (text.size() > long_text && text.capacity() < wanted) {
    text.reserve(wanted);
  }
}

}  // namespace

void ParseText::GetTextBuff(wchar_t** buffer, int& length, int limit) {
  auto const most = static_cast<std::size_t>(std::max(limit, 0));
  length = static_cast<int>(std::min(text_.size(), most));
  if (buffer != nullptr) {
    *buffer = text_.data();
  }
}

TextCallback::~TextCallback() = default;

HString TextCallback::GetStopReason() const {
  return HString("no more text is wanted");
}

struct TextLineCallback::State {
  struct Kind {
    ParseText text;
    bool exists = false;
  };

  HString output_path;
  ParseLimits limits;
  std::array<Kind, kind_count> kinds;
  std::optional<morvabs::AtomicFile> output;
  std::int64_t main_room = 0;    ///< characters in memory, or bytes in the output file
  std::int64_t others_room = 0;  ///< characters of all other kinds together
  std::string stop_reason;

  Kind& kind(ParseTextType type) { return kinds[static_cast<std::size_t>(type)]; }
  bool write_main(std::string_view utf8);
  void tell_unwritten();
};

void TextLineCallback::State::tell_unwritten() {
  stop_reason = morvabs::to_utf8(output_path.get_ws()) +
                " cannot be written: " + std::system_category().message(output->error());
}

bool TextLineCallback::State::write_main(std::string_view utf8) {
  auto const room = static_cast<std::size_t>(std::max<std::int64_t>(main_room, 0));
  bool const fits = utf8.size() <= room;
  auto piece = utf8.substr(0, room);
  if (!fits) {
    piece = piece.substr(0, morvabs::complete_utf8_prefix(piece));
    stop_reason = "main text over " + std::to_string(limits.i_output_bytes) + " bytes";
    main_room = 0;
  } else {
    main_room -= static_cast<std::int64_t>(piece.size());
  }
  if (!output->write(piece)) {
    tell_unwritten();
    return false;
  }
  return fits;
}

TextLineCallback::TextLineCallback() : state_(std::make_unique<State>()) {}

TextLineCallback::~TextLineCallback() = default;

void TextLineCallback::SetOutputFile(HString const& path) {
  state_->output_path = path;
}

void TextLineCallback::OnBegin() {
  auto const path = state_->output_path;
  state_ = std::make_unique<State>();
  state_->output_path = path;
  state_->limits = Global::pins()->limits;
  state_->others_room = state_->limits.i_memory_chars;
  bool const to_file = !mb_in_memory && path.not_empty();
  state_->main_room = to_file ? state_->limits.i_output_bytes : state_->limits.i_memory_chars;
  if (to_file) {
    // A path that no file can have fails like one that cannot be written.
    state_->output.emplace(morvabs::to_path(path).value_or(std::string()),
                           morvabs::AtomicFile::Access::owner_only);
  }
}

bool TextLineCallback::OnText(ParseTextType type, std::string_view utf8) {
  if (!is_kind(type)) {
    return true;
  }
  bool const is_main = type == ParseTextType_main;
  if (is_main && state_->output) {
    return state_->write_main(utf8);
  }
  auto& kind = state_->kind(type);
  kind.exists = kind.exists || !utf8.empty();
  auto& room = is_main ? state_->main_room : state_->others_room;
  make_room(kind.text.text_, state_->limits.i_memory_chars);
  if (append_within(kind.text.text_, utf8, room)) {
    return true;
  }
  state_->stop_reason = std::string(is_main ? "main text" : "text beside the main text") +
                        " over " + std::to_string(state_->limits.i_memory_chars) + " characters";
  return false;
}

bool TextLineCallback::OnEnd(bool keep) {
  auto& main = state_->kind(ParseTextType_main);
  main.exists = main.exists || keep;
  bool written = true;
  if (state_->output && keep) {
    written = state_->output->commit();
    if (!written) {
      state_->tell_unwritten();
    }
  }
  state_->output.reset();
  return written;
}

HString TextLineCallback::GetStopReason() const {
  return HString(state_->stop_reason.c_str());
}

ParseText* TextLineCallback::GetTextByType(ParseTextType type) const {
  if (!is_kind(type) || !state_->kind(type).exists) {
    return nullptr;
  }
  return &state_->kind(type).text;
}

}  // namespace Orlec
