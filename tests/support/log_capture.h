#pragma once

#include <string>
#include <vector>

#include "host/HFileLog.h"

namespace test {

/// Collects the log's records at a level for as long as it lives, then restores the log.
class LogCapture {
 public:
  struct Record {
    int level;
    std::wstring tag;
    std::wstring text;
    bool operator==(Record const&) const = default;
  };

  explicit LogCapture(int level = 4) : old_level_(HFileLog::ins()->mi_level) {
    HFileLog::ins()->mi_level = level;
    HFileLog::ins()->set_sink(
        [this](int at, HString const& tag, int /*line*/, HString const& text) {
          records_.push_back({at, tag.get_ws(), text.get_ws()});
        });
  }
  ~LogCapture() {
    HFileLog::ins()->set_sink({});
    HFileLog::ins()->mi_level = old_level_;
  }
  LogCapture(LogCapture const&) = delete;
  LogCapture& operator=(LogCapture const&) = delete;

  std::vector<Record> const& records() const { return records_; }

 private:
  int old_level_;
  std::vector<Record> records_;
};

}  // namespace test
