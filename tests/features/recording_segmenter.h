#pragma once

#include <string>
#include <vector>

/// What the system asked of the segmenter; a dictionary is always there unless `has_dictionary` is
/// false.
struct RecordedCalls {
  struct Call {
    std::wstring subject;
    std::wstring name;
    unsigned long top;
    bool flag;
    bool operator==(Call const&) const = default;
  };

  static RecordedCalls& get();

  bool has_dictionary = true;
  std::vector<Call> calls;
};
