#include "host/HFileLog.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "host/utf8.h"
#include "morvabs/log_output.h"

namespace {

constexpr int lowest_level = 0;
constexpr int highest_level = 4;
constexpr int default_level = 1;

int level_from_environment() {
  char const* const value = std::getenv("MORVA_LOG_LEVEL");
  std::string_view const text = value == nullptr ? "" : value;
  int level = default_level;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
  bool const is_level = error == std::errc() && end == text.data() + text.size() &&
                        level >= lowest_level && level <= highest_level;
  return is_level ? level : default_level;
}

/// The open records of one thread.
struct RecordRing {
  static constexpr std::size_t size = 16;
  std::array<HStringForLog, size> records;
  std::size_t next = 0;

  RecordRing() { current = this; }
  ~RecordRing() { current = nullptr; }
  RecordRing(RecordRing const&) = delete;
  RecordRing& operator=(RecordRing const&) = delete;

  static thread_local RecordRing* current;
};

thread_local RecordRing* RecordRing::current = nullptr;

/// Null while the thread ends, when what it kept is gone already.
RecordRing* ring_of_thread() {
  static thread_local RecordRing ring;
  return RecordRing::current == nullptr ? nullptr : &ring;
}

/// Set while a thread is inside the sink: what the sink logs goes to the default place.
thread_local bool is_in_sink = false;

std::shared_ptr<HFileLog::Sink const>& current_sink() {
  static auto* const sink = new std::shared_ptr<HFileLog::Sink const>;
  return *sink;
}

/// Text of one line: names and texts from documents must not be able to forge further records or to
/// steer a terminal.
std::string one_line(HString const& text) {
  std::string line;
  for (wchar_t const c : text.get_ws()) {
    auto const value = static_cast<char32_t>(c);
    bool const is_control = value < 0x20 || (value >= 0x7F && value < 0xA0);
    bool const is_line_separator = value == 0x2028 || value == 0x2029;
    if (c == L'\n') {
      line += "\\n";
    } else if (c == L'\r') {
      line += "\\r";
    } else if (c == L'\t') {
      line += "\\t";
    } else if (is_control || is_line_separator) {
      std::array<char, 8> digits{};
      auto const end =
          std::to_chars(digits.data(), digits.data() + digits.size(), std::uint32_t{value}, 16).ptr;
      line.append("\\x{").append(digits.data(), end).append("}");
    } else {
      morvabs::append_utf8(line, {&c, 1});
    }
  }
  return line;
}

/// Whether the host's sink took the record.
bool give_to_sink(int level, HString const& tag, int line, HString const& text) {
  // Held here, so that a sink may replace itself.
  auto const sink = current_sink();
  if (!sink || is_in_sink) {
    return false;
  }
  is_in_sink = true;
  bool is_taken = true;
  try {
    (*sink)(level, tag, line, text);
  } catch (...) {
    // The work that is logged goes on whatever the host's logger does.
    is_taken = false;
  }
  is_in_sink = false;
  return is_taken;
}

}  // namespace

HStringForLog& HStringForLog::operator<<(HString const& text) {
  if (mb_on) {
    str_text += text;
  }
  return *this;
}

HFileLog::HFileLog() : mi_level(level_from_environment()) {}

HFileLog* HFileLog::ins() {
  // Never freed: other static objects may still log while the process ends.
  static auto* const log = new HFileLog;
  return log;
}

HFileLog* HFileLog::pins() {
  return ins();
}

HStringForLog& HFileLog::get(int level, wchar_t const* file_tag, int line) {
  RecordRing* const ring = ring_of_thread();
  if (ring == nullptr) {
    static auto* const silent = new HStringForLog;
    return *silent;
  }
  HStringForLog& record = ring->records[ring->next];
  ring->next = (ring->next + 1) % RecordRing::size;
  record.str_text.clear();
  record.mb_on = mb_enable && level > lowest_level && level <= mi_level;
  record.level_ = level;
  record.line_ = line;
  record.tag_ = record.mb_on ? HString(file_tag) : HString();
  return record;
}

void HFileLog::log(HStringForLog& record) {
  if (!record.mb_on) {
    return;
  }
  // The record is free again before the sink runs, which may take records itself.
  HString const tag = std::exchange(record.tag_, HString());
  HString const text = std::exchange(record.str_text, HString());
  int const level = record.level_;
  int const line = record.line_;
  record.mb_on = false;
  if (!give_to_sink(level, tag, line, text)) {
    morvabs::write_log_line(level, one_line(tag), line, one_line(text));
  }
}

void HFileLog::log_noise(HStringForLog& record) {
  log(record);
}

void HFileLog::set_sink(Sink sink) {
  current_sink() = sink ? std::make_shared<Sink const>(std::move(sink)) : nullptr;
}
