#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// cppjieba as the comparison uses it: the default mode, which joins the most probable path with
/// the model for unknown words.
class CppjiebaPeer {
 public:
  /// Loads the word list and the model, and with them, where TextRank is wanted, the stop words.
  enum class Load { segmenter, segmenter_and_text_rank };
  explicit CppjiebaPeer(Load load);
  ~CppjiebaPeer();
  CppjiebaPeer(CppjiebaPeer const&) = delete;
  CppjiebaPeer& operator=(CppjiebaPeer const&) = delete;

  /// Number of tokens of a text in UTF-8. They are found as ranges, with no string for any of them:
  /// the least that cppjieba can be asked for.
  std::size_t count_tokens(std::string const& text) const;
  /// Number of keywords found, at most `top`.
  std::size_t count_keywords(std::string const& text, std::size_t top) const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};
