#include "morvajieba/engine.h"

#include <algorithm>

#include <sys/stat.h>

#include "host/Orlec/IFile.h"
#include "host/utf8.h"
#include "morvabs/atomic_file.h"
#include "morvabs/text_decoder.h"
#include "morvajieba/text_feeder.h"

namespace morvajieba {

namespace {

/// Longest word lists that are taken.
constexpr std::int64_t most_list_bytes = std::int64_t{16} << 20;
/// What is read of one text file.
constexpr std::int64_t most_text_bytes = std::int64_t{1} << 30;
constexpr std::int64_t chunk_bytes = std::int64_t{1} << 20;
constexpr std::size_t piece_characters = std::size_t{1} << 16;

std::string encoding_of(std::string_view bytes, std::size_t& mark_length) {
  morvabs::DetectedEncoding const found = morvabs::detect_encoding(bytes);
  mark_length = found.mark_length;
  // Control characters make no text unreadable here: a parser may well deliver them.
  return found.name.empty() ? "UTF-8" : found.name;
}

}  // namespace

std::string join(std::string const& directory, char const* name) {
  return directory.ends_with('/') ? directory + name : directory + '/' + name;
}

FileStamp FileStamp::of(std::string const& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  return {true,           status.st_dev,         status.st_ino,
          status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

Engine::Stamps Engine::stamps_of(std::string const& directory) {
  return {FileStamp::of(join(directory, dictionary_name)),
          FileStamp::of(join(directory, user_words_name)),
          FileStamp::of(join(directory, stop_words_name))};
}

bool Engine::load(std::string const& directory) {
  // The stamps are taken before the files are read: a change in between is seen the next time.
  Stamps const stamps = stamps_of(directory);
  if (directory == directory_ && stamps == stamps_ && lexicon_) return true;
  lexicon_.reset();
  // Where this one cannot be loaded to its end, none is.
  directory_.clear();
  // An empty path would mean the root directory.
  if (directory.empty() || !dictionary_.open(join(directory, dictionary_name))) return false;
  lexicon_.emplace(dictionary_);
  stop_words_.emplace();
  std::string content;
  if (morvabs::read_file(join(directory, user_words_name), content, most_list_bytes)) {
    lexicon_->load_user_words(content);
  }
  if (morvabs::read_file(join(directory, stop_words_name), content, most_list_bytes)) {
    stop_words_->load(content);
  }
  directory_ = directory;
  stamps_ = stamps;
  return true;
}

void Engine::cut(HString const& text, TokenSink& sink) {
  Segmenter segmenter(*lexicon_);
  TextFeeder feeder(segmenter, sink);
  for (std::wstring_view rest = text_view(text); !rest.empty();) {
    std::wstring_view const piece = rest.substr(0, piece_characters);
    feeder.feed(piece);
    rest.remove_prefix(piece.size());
  }
  feeder.finish();
}

bool Engine::cut_file(HString const& path, TokenSink& sink) {
  Orlec::IFile const file(path, false);
  if (!file.IsOpen()) return false;
  std::string chunk(static_cast<std::size_t>(chunk_bytes), '\0');
  std::optional<morvabs::TextDecoder> decoder;
  Segmenter segmenter(*lexicon_);
  TextFeeder feeder(segmenter, sink);
  std::string utf8;
  for (std::int64_t offset = 0; offset < most_text_bytes;) {
    std::int64_t const got = file.ReadAt(offset, chunk.data(), chunk_bytes);
    if (got < 0) return false;
    std::string_view bytes(chunk.data(), static_cast<std::size_t>(got));
    if (!decoder) {
      std::size_t mark_length = 0;
      decoder.emplace(encoding_of(bytes, mark_length));
      bytes.remove_prefix(mark_length);
    }
    utf8.clear();
    decoder->decode(bytes, got == 0, utf8);
    feeder.feed(morvabs::from_utf8(utf8));
    if (got == 0) break;
    offset += got;
  }
  feeder.finish();
  return true;
}

}  // namespace morvajieba
