#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"
#include "morvajieba/lexicon.h"

namespace morvajieba {

/// Takes the tokens of a text, in order.
class TokenSink {
 public:
  virtual ~TokenSink() = default;
  /// The token's text is valid during the call only.
  virtual void token(std::wstring_view text) = 0;
};

/// Cuts text into words as jieba does: blocks of Han characters, ASCII letters and digits and a few
/// signs are cut along the most probable path through the graph of the words in them, and what
/// remains of single characters by a hidden-Markov model. Every other character is a token of its
/// own, but CR LF is one. Beyond that, runs of letters of other alphabets are one token, with the
/// ASCII letters and digits in them, runs of hiragana and of katakana too, and full-width forms are
/// read as ASCII.
///
/// The time is linear in the text; three bytes are held per character of the longest block. The
/// arrays are kept between calls, so that cutting allocates nothing.
class MORVA_EXPORT Segmenter {
 public:
  /// The lexicon outlives the segmenter.
  explicit Segmenter(Lexicon const& lexicon) : lexicon_(&lexicon) {}

  void cut(std::wstring_view text, TokenSink& sink);
  /// The same without the model for unknown words: what remains of single characters stays single,
  /// but single ASCII letters and digits are joined.
  void cut_without_model(std::wstring_view text, TokenSink& sink);

 private:
  void cut_text(std::wstring_view text);
  std::wstring_view fold(std::wstring_view text);
  std::size_t cut_special(std::wstring_view text, std::size_t start);
  void cut_block(std::wstring_view block);
  template <bool with_user_words>
  void find_path(std::wstring_view block);
  void emit_path(std::wstring_view block);
  void emit_path_without_model(std::wstring_view block);
  void emit_singles(std::wstring_view singles);
  void emit_unknown(std::wstring_view text);
  void emit_by_model(std::wstring_view han);
  void find_states(std::wstring_view han);
  void emit_unless_forbidden(std::wstring_view word);
  void emit_each(std::wstring_view text);

  Lexicon const* lexicon_;
  TokenSink* sink_ = nullptr;
  bool with_model_ = true;
  std::wstring folded_;
  std::vector<std::uint16_t> codes_;  // of the block's characters
  std::vector<std::uint8_t> steps_;   // length of the best word that begins at each character
  std::vector<std::uint8_t> states_;  // of a run of unknown characters
  // Weight of the best path from a character to the end of the block; only those within a word's
  // length are needed at a time.
  std::array<double, 256> weights_{};
};

}  // namespace morvajieba
