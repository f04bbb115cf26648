#include "morvajieba/text_feeder.h"

#include <algorithm>

namespace morvajieba {

namespace {

/// Length of the part of a text that can be cut without knowing what follows: up to behind the last
/// character that is always alone. A CR is not, as LF may follow.
std::size_t find_safe_length(std::wstring_view text) {
  for (std::size_t i = text.size(); i-- > 0;) {
    if (classify(text[i]) == CharacterClass::other && text[i] != L'\r') return i + 1;
  }
  return 0;
}

}  // namespace

void TextFeeder::feed(std::wstring_view piece) {
  while (!piece.empty()) {
    std::size_t const safe = find_safe_length(piece);
    if (safe > 0 && waiting_.empty()) {
      segmenter_->cut(piece.substr(0, safe), *sink_);
      piece.remove_prefix(safe);
      continue;
    }
    std::size_t const wanted = safe > 0 ? safe : piece.size();
    std::size_t const taken = std::min(wanted, longest_wait - waiting_.size());
    waiting_.append(piece.substr(0, taken));
    piece.remove_prefix(taken);
    if ((safe > 0 && taken == safe) || waiting_.size() == longest_wait) finish();
  }
}

void TextFeeder::finish() {
  segmenter_->cut(waiting_, *sink_);
  waiting_.clear();
}

}  // namespace morvajieba
