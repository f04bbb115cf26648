#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/HString.h"
#include "host/WordNode.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/lexicon.h"
#include "morvajieba/segmenter.h"
#include "morvajieba/stop_words.h"

namespace morvajieba {

inline constexpr char dictionary_name[] = "morvajieba.dict";
inline constexpr char user_words_name[] = "user.dict";
inline constexpr char stop_words_name[] = "stop_words";

/// The path of a file in a directory.
std::string join(std::string const& directory, char const* name);

/// What tells one state of a file from another.
struct FileStamp {
  bool exists = false;
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  static FileStamp of(std::string const& path);
  bool operator==(FileStamp const&) const = default;
};

/// All that belongs to one dictionary directory, and the work done with it.
class Engine {
 public:
  /// Loads the directory where it, or one of its files, is another than at the last call. False,
  /// with nothing loaded, when it holds no dictionary that can be used.
  bool load(std::string const& directory);

  /// Both need a loaded directory.
  void cut(HString const& text, TokenSink& sink);
  /// False when the file cannot be read.
  bool cut_file(HString const& path, TokenSink& sink);

  StopWords const& stop_words() const { return *stop_words_; }
  Lexicon const& lexicon() const { return *lexicon_; }

 private:
  using Stamps = std::array<FileStamp, 3>;

  static Stamps stamps_of(std::string const& directory);

  std::string directory_;
  Stamps stamps_;
  Dictionary dictionary_;
  std::optional<Lexicon> lexicon_;  // empty while nothing is loaded
  std::optional<StopWords> stop_words_;
};

}  // namespace morvajieba
