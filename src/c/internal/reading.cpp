#include "c/internal/reading.h"

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <system_error>

#include "dna/HFileDNA.h"
#include "dna/HFileSimHash.h"
#include "features/HFileWordNode.h"
#include "host/HTessarineResult.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/LocateMgr.h"
#include "host/Orlec/ParseFile.h"
#include "host/utf8.h"

#include "c/internal/call.h"
#include "c/internal/shown.h"

namespace morva::c {

namespace {

constexpr int all_words = 0;
constexpr int narrow_length = 32;
constexpr int wide_length = 1024;
// Of the main text, as `HFileFeature` and `HFileDNA` have it.
constexpr int most_characters = 0xa00000;

// The outcomes have the numbers of the parsers'.
static_assert(static_cast<int>(Orlec::ParseOutcome::text) == MORVA_OUTCOME_TEXT);
static_assert(static_cast<int>(Orlec::ParseOutcome::no_text) == MORVA_OUTCOME_NO_TEXT);
static_assert(static_cast<int>(Orlec::ParseOutcome::encrypted) == MORVA_OUTCOME_ENCRYPTED);
static_assert(static_cast<int>(Orlec::ParseOutcome::not_supported) == MORVA_OUTCOME_NOT_SUPPORTED);
static_assert(static_cast<int>(Orlec::ParseOutcome::incomplete) == MORVA_OUTCOME_INCOMPLETE);
static_assert(static_cast<int>(Orlec::ParseOutcome::damaged) == MORVA_OUTCOME_DAMAGED);
static_assert(static_cast<int>(Orlec::ParseOutcome::limit_reached) == MORVA_OUTCOME_LIMIT_REACHED);
static_assert(static_cast<int>(Orlec::ParseOutcome::timed_out) == MORVA_OUTCOME_TIMED_OUT);
static_assert(static_cast<int>(Orlec::ParseOutcome::failed) == MORVA_OUTCOME_FAILED);
static_assert(int{Orlec::ParseTextType_main} == MORVA_TEXT_MAIN);
static_assert(int{Orlec::ParseTextType_other} == MORVA_TEXT_OTHER);

// The length of fingerprints for one scope; whoever else computes some in this process has set one.
class DnaLength {
 public:
  explicit DnaLength(int length) : former_(HFileDNA::mi_dna_length) {
    HFileDNA::mi_dna_length = length;
  }
  ~DnaLength() { HFileDNA::mi_dna_length = former_; }
  DnaLength(DnaLength const&) = delete;
  DnaLength& operator=(DnaLength const&) = delete;

 private:
  int former_;
};

std::string dna_of(std::map<HString, double> const& words, int length) {
  DnaLength const in_force(length);
  HString dna;
  HFileSimHash::simhashDNA(words, dna);
  return morvabs::to_utf8(text_view(dna));
}

void add_fingerprints(Wants const& wants, Reading& reading) {
  std::map<HString, double> weights;
  for (WordNode const& node : reading.words) {
    weights[node.word] = node.weight;
    reading.covered += std::int64_t{node.count} * node.word.length();
  }
  if (wants.dna()) {
    reading.dna = dna_of(weights, narrow_length);
  }
  if (wants.wide_dna()) {
    reading.wide_dna = dna_of(weights, wide_length);
  }
}

// Fewer words are the first of more, so that the text is cut once for everything.
void add_words(HString const& text, HString const& name, Wants const& wants, Reading& reading) {
  bool const with_dna = wants.dna() || wants.wide_dna();
  std::size_t const most = wants.most_words == 0 ? 0 : std::max(wants.most_words, record_words);
  constexpr std::size_t most_to_ask = std::numeric_limits<int>::max();
  int const asked = with_dna ? all_words : static_cast<int>(std::min(most, most_to_ask));
  if (!HFileWordNode::get_file_word_node(text, name, reading.words, asked)) {
    reading.status = MORVA_NO_DICTIONARY;
    reading.reason =
        "there is no dictionary in " + shown(Orlec::LocateMgr::pins()->get_dict_path(false));
    return;
  }
  if (with_dna) {
    add_fingerprints(wants, reading);
  }
  std::size_t const kept = !wants.words() ? 0 : most == 0 ? reading.words.size() : most;
  reading.words.resize(std::min(kept, reading.words.size()));
}

HString text_of(Orlec::TextLineCallback const& callback, int kind, int most) {
  Orlec::ParseText* const text = callback.GetTextByType(static_cast<Orlec::ParseTextType>(kind));
  if (text == nullptr) {
    return {};
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  text->GetTextBuff(&buffer, length, most);
  return {buffer, length};
}

void add_texts(Orlec::TextLineCallback const& callback, Reading& reading) {
  for (std::size_t i = 0; i < text_kinds; ++i) {
    HString const text =
        text_of(callback, static_cast<int>(i) + 1, std::numeric_limits<int>::max());
    reading.texts[i] = morvabs::to_utf8(text_view(text));
  }
}

// Of a file without a parser.
Reading without_parser(Orlec::IFile const& file, HString const& path) {
  Reading reading;
  if (!file.IsOpen()) {
    reading.status = MORVA_CANNOT_OPEN;
    reading.error = file.GetError();
    reading.reason = std::system_category().message(reading.error);
    return reading;
  }
  reading.status = MORVA_NOT_READ;
  reading.outcome = MORVA_OUTCOME_NOT_SUPPORTED;
  HTessarineResult recognised;
  reading.reason = HTessarine::recognize(path, recognised)
                       ? "there is no reader for files of the type " + shown(recognised.str_suffix)
                       : "the type of the file is not known";
  return reading;
}

}  // namespace

Wants checked_wants(unsigned flags, std::size_t most_words) {
  constexpr unsigned known =
      MORVA_WANT_WORDS | MORVA_WANT_DNA | MORVA_WANT_WIDE_DNA | MORVA_WANT_TEXT;
  if ((flags & ~known) != 0) {
    throw Failure(MORVA_INVALID_ARGUMENT, "wants holds a flag that does not exist");
  }
  return {flags, most_words};
}

Reading read_file(HString const& path, Wants const& wants) {
  Orlec::IFile file(path, false);
  Orlec::TextLineCallback callback;
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    return without_parser(file, path);
  }
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  bool const is_read = parser->InitFile();
  Reading reading;
  reading.status = is_read ? MORVA_OK : MORVA_NOT_READ;
  reading.outcome = static_cast<int>(parser->GetOutcome());
  reading.reason = shown(parser->GetReason());
  if (is_read && wants.segmenting()) {
    if (HString const text = text_of(callback, MORVA_TEXT_MAIN, most_characters);
        text.not_empty()) {
      add_words(text, path, wants, reading);
    }
  }
  if (wants.text()) {
    add_texts(callback, reading);
  }
  return reading;
}

Reading read_text(std::string_view utf8, Wants const& wants) {
  std::wstring const wide = morvabs::from_utf8(utf8);
  if (wide.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw Failure(MORVA_INVALID_ARGUMENT, "the text is over 2147483647 characters");
  }
  HString const text(wide.data(), static_cast<int>(wide.size()));
  Reading reading;
  reading.outcome = text.empty() ? MORVA_OUTCOME_NO_TEXT : MORVA_OUTCOME_TEXT;
  if (wants.segmenting()) {
    add_words(text, L"", wants, reading);
  }
  if (wants.text()) {
    reading.texts.front() = morvabs::to_utf8(wide);
  }
  return reading;
}

std::string failure_line(HString const& path, Reading const& reading) {
  std::string line = path.empty() ? std::string() : shown(path) + ": ";
  if (reading.status == MORVA_NOT_READ) {
    line += morva_outcome_name(reading.outcome);
    line += reading.reason.empty() ? "" : ": ";
  }
  return line + reading.reason;
}

}  // namespace morva::c
