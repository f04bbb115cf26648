#include "dna/HFileDNA.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

#include "dna/HFileSimHash.h"
#include "dna/internal/fingerprint.h"
#include "features/HFileWordNode.h"
#include "features/internal/text_files.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/TextCallback.h"
#include "host/internal/log_line.h"
#include "host/internal/main_text.h"

namespace {

constexpr wchar_t const* tag = L"../HFileDNA";
constexpr int wide_length = 1024;
constexpr int field_length = 8;
constexpr std::size_t dimensions = 128;
constexpr std::int64_t offset = 2147483647;
constexpr double scale = 1000000.0;
constexpr int all_words = 0;

void get_word_node_dna(std::vector<WordNode> const& words, HString& str_dna) {
  std::vector<morva::WeightedWord> list;
  list.reserve(words.size());
  for (WordNode const& node : words) {
    list.push_back({&node.word, node.weight});
  }
  str_dna = morva::fingerprint(list);
}

// The words of the files, or with `parse_first` of the documents; false without a dictionary.
bool get_all_words(std::vector<HString> const& files, bool parse_first,
                   std::vector<WordNode>& words) {
  if (!parse_first) {
    return HFileWordNode::get_file_word_node(files, words, all_words);
  }
  morva::TextFiles texts;
  for (HString const& file : files) {
    texts.add(file);
  }
  return HFileWordNode::get_file_word_node(texts.files(), words, all_words);
}

int covered_characters(std::vector<WordNode> const& words) {
  std::int64_t sum = 0;
  for (WordNode const& node : words) {
    sum += std::int64_t{node.count} * node.word.length();
  }
  return static_cast<int>(sum);
}

// The low 32 bits of a value truncated to a 64-bit integer; 0 where it does not fit one.
unsigned int truncated_field(double value) {
  constexpr double limit = 9223372036854775808.0;
  if (!(std::fabs(value) < limit)) {
    return 0;
  }
  return static_cast<unsigned int>(static_cast<std::int64_t>(value));
}

}  // namespace

int HFileDNA::mi_dna_length = 32;

HFileDNA::HFileDNA() = default;
HFileDNA::~HFileDNA() = default;

int HFileDNA::get_dna_length() {
  return mi_dna_length;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes values.
HPointN HFileDNA::get_pointn(HString label, HString str_dna) {
  if (str_dna.length() != wide_length) {
    morva::log_line(1, tag, __LINE__, L"dna leng not is 1024, str_dna.length:",
                    HString(str_dna.length(), false));
    return {};
  }
  std::vector<double> values;
  values.reserve(dimensions);
  for (int start = 0; start < wide_length; start += field_length) {
    std::int64_t const field = str_dna.substr(start, field_length).to_int64_0x();
    values.push_back(static_cast<double>(field - offset) / scale);
  }
  return {label, values};
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes a value.
HString HFileDNA::get_dna(HPointN point) {
  std::vector<double> values;
  point.get_vt_data(values);
  if (values.size() != dimensions) {
    morva::log_line(1, tag, __LINE__, L"pointn size:", HString(values.size()));
    return L"0";
  }
  HString str_dna;
  for (double const value : values) {
    str_dna +=
        HFileSimHash::DecIntToHexStr(truncated_field(value * scale + static_cast<double>(offset)));
  }
  return str_dna;
}

bool HFileDNA::get_file_centent_dna(HString const& text, HString const& name, HString& str_dna,
                                    int* count, int length) {
  mi_dna_length = length;
  if (count != nullptr) {
    *count = 0;
  }
  str_dna.clear();
  std::vector<WordNode> words;
  if (HFileWordNode::get_file_word_node(text, name, words, all_words)) {
    get_word_node_dna(words, str_dna);
  }
  if (str_dna.empty()) {
    morva::log_line(1, tag, __LINE__, L"file:", name, L" dna is empty.");
    return false;
  }
  if (count != nullptr) {
    *count = covered_characters(words);
  }
  return true;
}

bool HFileDNA::get_file_dna(Orlec::ParseFile* parser, HString& str_dna, int* count, int length) {
  std::optional<HString> const text = morva::collected_main_text(parser, tag, L"get_file_dna");
  if (!text) {
    return false;
  }
  return get_file_centent_dna(*text, parser->GetFileAlias().get_short_name_no_suffix(), str_dna,
                              count, length);
}

bool HFileDNA::get_file_dna(HString const& path, HString& str_dna, int* count, int length) {
  Orlec::IFile file(path, false);
  std::unique_ptr<Orlec::ParseFile> parser(Orlec::GetParser(&file, false));
  if (parser == nullptr) {
    morva::log_assertion(tag, L"get_file_dna", __LINE__, L"ASSERT_NULL");
    return false;
  }
  auto callback = std::make_unique<Orlec::TextLineCallback>();
  parser->SetCallBack(callback.get(), false);
  parser->SetMask(1);
  bool const done = parser->InitFile() && get_file_dna(parser.get(), str_dna, count, length);
  callback.reset();
  parser.reset();
  return done;
}

bool HFileDNA::get_file_dna(HString const& path, HString& str_dna, HTessarineResult& result,
                            bool parse_first) {
  str_dna.clear();
  std::vector<WordNode> words;
  if (get_all_words({path}, parse_first, words)) {
    get_word_node_dna(words, str_dna);
  }
  result.i_word += covered_characters(words);
  return str_dna.not_empty();
}

bool HFileDNA::get_file_dna(std::vector<HString> const& files, HString& str_dna, bool parse_first,
                            int* count) {
  if (count != nullptr) {
    *count = 0;
  }
  std::vector<WordNode> words;
  if (get_all_words(files, parse_first, words)) {
    get_word_node_dna(words, str_dna);
  }
  if (str_dna.empty()) {
    return false;
  }
  if (count != nullptr) {
    *count += covered_characters(words);
  }
  return true;
}
