#include "cppjieba_peer.h"
#include "first_word.h"

char const* const candidate_name = "cppjieba";

std::size_t count_first_tokens(std::string const& text) {
  // Never freed: a program that goes on would hold it too.
  static auto const* const peer = new CppjiebaPeer(CppjiebaPeer::Load::segmenter);
  return peer->count_tokens(text);
}
