#pragma once

#include <string>
#include <string_view>

#include "host/export.h"
#include "morvajieba/segmenter.h"

namespace morvajieba {

/// Cuts a text that comes in pieces of any size, as if it were whole: each piece is cut up to the
/// last place where no token and no block can go on, and the rest waits for the next piece. Only a
/// text that runs on for `longest_wait` characters without such a place is cut where it is.
class MORVA_EXPORT TextFeeder {
 public:
  static constexpr std::size_t longest_wait = std::size_t{1} << 22;

  TextFeeder(Segmenter& segmenter, TokenSink& sink) : segmenter_(&segmenter), sink_(&sink) {}

  void feed(std::wstring_view piece);
  /// Cuts what still waits; the text is at its end.
  void finish();

 private:
  Segmenter* segmenter_;
  TokenSink* sink_;
  std::wstring waiting_;
};

}  // namespace morvajieba
