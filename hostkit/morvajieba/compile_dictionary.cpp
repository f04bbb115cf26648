// Build-time program: compiles jieba's dictionary and hidden-Markov tables, as the Debian package
// python3-jieba installs them, into the one file that the segmenter maps.

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "morvajieba/characters.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/dictionary_format.h"
#include "morvajieba/exact_log.h"
#include "morvajieba/trie_builder.h"

namespace {

using namespace morvajieba;

/// Log probability of what the tables do not hold.
constexpr double impossible = -3.14e100;
constexpr std::uint32_t code_places = han_count + 0x80;

std::string read_text(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad() || content.empty()) throw std::runtime_error("cannot read " + path);
  return content;
}

template <typename T>
T parse_number(std::string_view text) {
  T value{};
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::runtime_error("not a number: " + std::string(text));
  }
  return value;
}

std::u32string decode(std::string_view utf8) {
  std::u32string text;
  for (std::size_t i = 0; i < utf8.size();) {
    auto const lead = static_cast<unsigned char>(utf8[i]);
    int const more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
    for (int k = 1; k <= more; ++k) {
      auto const byte = static_cast<unsigned char>(utf8.at(i + static_cast<std::size_t>(k)));
      code = code << 6 | (byte & 0x3Fu);
    }
    text += code;
    i += static_cast<std::size_t>(more) + 1;
  }
  return text;
}

/// One line of the word list.
struct Entry {
  std::uint64_t frequency;
  std::string tag;
};

struct WordList {
  std::map<std::u32string, Entry> words;
  std::uint64_t total = 0;
};

/// "word frequency tag" lines. A word that stands twice counts twice in the total, and the later
/// line gives its frequency and tag.
WordList read_words(std::string const& path) {
  WordList list;
  std::string const content = read_text(path);
  for (std::size_t start = 0; start < content.size();) {
    std::size_t const end = std::min(content.find('\n', start), content.size());
    std::string_view const line(content.data() + start, end - start);
    start = end + 1;
    if (line.empty()) continue;
    std::size_t const first = line.find(' ');
    std::size_t const second = line.find(' ', first + 1);
    if (second == std::string_view::npos) throw std::runtime_error("bad line in " + path);
    Entry entry{parse_number<std::uint64_t>(line.substr(first + 1, second - first - 1)),
                std::string(line.substr(second + 1))};
    list.total += entry.frequency;
    list.words[decode(line.substr(0, first))] = std::move(entry);
  }
  return list;
}

/// Reads the one Python dictionary of a table file, telling each number with the keys that lead to
/// it.
class TableReader {
 public:
  using Receiver = std::function<void(std::vector<char32_t> const& keys, double value)>;

  TableReader(std::string const& path, Receiver receiver)
      : text_(read_text(path)), receiver_(std::move(receiver)) {
    position_ = text_.find("P={");
    if (position_ == std::string::npos) throw std::runtime_error("no table in " + path);
    position_ += 2;
  }

  void read() {
    read_dictionary();
    if (numbers_ == 0) throw std::runtime_error("empty table");
  }

 private:
  void read_dictionary() {
    expect('{');
    while (peek() != '}') {
      keys_.push_back(read_key());
      expect(':');
      if (peek() == '{') {
        read_dictionary();
      } else {
        receiver_(keys_, read_value());
        ++numbers_;
      }
      keys_.pop_back();
      if (peek() == ',') ++position_;
    }
    expect('}');
  }
  char peek() {
    position_ = text_.find_first_not_of(" \r\n", position_);
    if (position_ == std::string::npos) throw std::runtime_error("table ends too early");
    return text_[position_];
  }
  void expect(char character) {
    if (peek() != character) throw std::runtime_error("malformed table");
    ++position_;
  }
  char32_t read_key() {
    expect('\'');
    std::size_t const end = text_.find('\'', position_);
    std::string const key = text_.substr(position_, end - position_);
    position_ = end + 1;
    if (key.size() == 6 && key.starts_with("\\u")) {
      return static_cast<char32_t>(std::stoul(key.substr(2), nullptr, 16));
    }
    if (key.size() != 1) throw std::runtime_error("unknown key in a table: " + key);
    return static_cast<unsigned char>(key[0]);
  }
  double read_value() {
    peek();
    std::size_t const end = text_.find_first_of(",} \r\n", position_);
    std::string_view const number(text_.data() + position_, end - position_);
    position_ = end;
    return parse_number<double>(number);
  }

  std::string text_;
  Receiver receiver_;
  std::size_t position_ = 0;
  std::vector<char32_t> keys_;
  std::size_t numbers_ = 0;
};

void read_table(std::string const& path, TableReader::Receiver receiver) {
  TableReader reader(path, std::move(receiver));
  reader.read();
}

State state_of(char32_t letter) {
  switch (letter) {
    case 'B':
      return state_begin;
    case 'E':
      return state_end;
    case 'M':
      return state_middle;
    case 'S':
      return state_single;
    default:
      throw std::runtime_error("unknown state in a table");
  }
}

/// The sections of the file, as bytes.
class DictionaryFile {
 public:
  template <typename T>
  void set(Section section, std::vector<T> const& elements) {
    std::string& bytes = sections_.at(section);
    bytes.resize(elements.size() * sizeof(T));
    std::memcpy(bytes.data(), elements.data(), bytes.size());
  }

  void write(std::string const& path, std::uint64_t total, std::size_t longest) const {
    DictionaryHeader header{};
    std::memcpy(header.magic, dictionary_magic, sizeof(header.magic));
    header.byte_order = dictionary_byte_order;
    header.version = dictionary_version;
    header.total = total;
    header.longest_word = static_cast<std::uint32_t>(longest);
    std::uint64_t offset = align(sizeof(header));
    for (std::size_t i = 0; i < section_count; ++i) {
      header.sections[i] = {offset, sections_[i].size()};
      offset = align(offset + sections_[i].size());
    }
    header.file_bytes = offset;
    header.checksum = header_checksum(header);

    std::string content(offset, '\0');
    std::memcpy(content.data(), &header, sizeof(header));
    for (std::size_t i = 0; i < section_count; ++i) {
      content.replace(header.sections[i].offset, sections_[i].size(), sections_[i]);
    }
    std::ofstream out(path, std::ios::binary);
    out << content;
    out.close();
    if (!out) throw std::runtime_error("cannot write " + path);
  }

 private:
  static std::uint64_t align(std::uint64_t offset) { return (offset + 63) / 64 * 64; }

  std::array<std::string, section_count> sections_;
};

bool is_in_alphabet(char32_t character) {
  CharacterClass const kind = classify(static_cast<wchar_t>(character));
  return !is_full_width(static_cast<wchar_t>(character)) &&
         (kind == CharacterClass::han || kind == CharacterClass::ascii ||
          kind == CharacterClass::joiner);
}

std::uint32_t place_of(char32_t character) {
  return character < 0x80 ? han_count + character : character - first_han;
}

/// Codes by falling use in the word list, so that what is used most lies together in the array.
std::vector<std::uint16_t> make_codes(WordList const& list) {
  std::vector<std::uint64_t> uses(code_places, 0);
  for (auto const& [word, entry] : list.words) {
    if (!std::all_of(word.begin(), word.end(), is_in_alphabet)) continue;
    for (char32_t const character : word) uses[place_of(character)] += entry.frequency + 1;
  }
  std::vector<std::uint32_t> order(code_places);
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [&uses](std::uint32_t a, std::uint32_t b) { return uses[a] > uses[b]; });
  std::vector<std::uint16_t> codes(code_places, no_code);
  std::uint16_t next = 0;
  for (std::uint32_t const place : order) {
    bool const is_used = place < han_count || is_in_alphabet(place - han_count);
    if (is_used) codes[place] = next++;
  }
  return codes;
}

/// Numbers the distinct values; throws when there are more than `limit`.
template <typename T>
class Numbering {
 public:
  explicit Numbering(std::vector<T> first, std::size_t limit)
      : values_(std::move(first)), limit_(limit) {}

  std::size_t number(T const& value) {
    auto const [entry, is_new] = numbers_.emplace(value, values_.size());
    if (is_new) values_.push_back(value);
    if (values_.size() > limit_) throw std::runtime_error("too many distinct values");
    return entry->second;
  }
  std::vector<T> const& values() const { return values_; }

 private:
  std::unordered_map<T, std::size_t> numbers_;
  std::vector<T> values_;
  std::size_t limit_;
};

void add_frequencies(DictionaryFile& file, std::vector<std::uint64_t> frequencies) {
  frequencies.resize(std::bit_ceil(frequencies.size()), 0);
  std::vector<double> logs;
  logs.reserve(frequencies.size());
  for (std::uint64_t const frequency : frequencies) {
    logs.push_back(frequency == 0 ? 0.0 : exact_log(static_cast<double>(frequency)));
  }
  file.set(section_frequencies, frequencies);
  file.set(section_log_values, logs);
}

void add_tags(DictionaryFile& file, std::vector<std::string> const& tags) {
  std::vector<std::array<char, 8>> padded;
  for (std::string const& tag : tags) {
    std::array<char, 8> bytes{};
    if (tag.size() > bytes.size()) throw std::runtime_error("tag too long: " + tag);
    std::copy(tag.begin(), tag.end(), bytes.begin());
    padded.push_back(bytes);
  }
  file.set(section_tags, padded);
}

/// Adds the words; the length of the longest comes back. Words with characters that no block of
/// text to be cut can hold count in the total alone.
std::size_t add_words(DictionaryFile& file, WordList const& list) {
  std::vector<std::uint16_t> const codes = make_codes(list);
  Numbering<std::uint64_t> frequencies({0}, 0x10000);
  Numbering<std::string> tags({}, 0x100);
  std::vector<TrieWord> words;
  std::size_t longest = 0;
  for (auto const& [word, entry] : list.words) {
    // A frequency of 0 would say that the word is none, which is what leaving it out says.
    if (entry.frequency == 0 || !std::all_of(word.begin(), word.end(), is_in_alphabet)) continue;
    if (word.size() > longest_word) throw std::runtime_error("word too long");
    TrieWord& added = words.emplace_back();
    for (char32_t const character : word) added.codes.push_back(codes[place_of(character)]);
    added.frequency = static_cast<std::uint16_t>(frequencies.number(entry.frequency));
    added.tag = static_cast<std::uint8_t>(tags.number(entry.tag));
    longest = std::max(longest, word.size());
  }
  std::sort(words.begin(), words.end(),
            [](TrieWord const& a, TrieWord const& b) { return a.codes < b.codes; });
  std::vector<Node> const nodes = build_double_array(words, code_places);
  if (nodes.size() > Node::no_children) throw std::runtime_error("too many words");
  file.set(section_codes, codes);
  file.set(section_nodes, nodes);
  add_frequencies(file, frequencies.values());
  add_tags(file, tags.values());
  std::printf("%zu words, %zu slots\n", words.size(), nodes.size());
  return longest;
}

void add_model(DictionaryFile& file, std::string const& directory) {
  std::vector<double> model(std::size_t{state_count} * (state_count + 1), impossible);
  std::vector<double> emission(static_cast<std::size_t>(han_count) * state_count, impossible);
  read_table(directory + "prob_start.py",
             [&](auto const& keys, double value) { model.at(state_of(keys.at(0))) = value; });
  read_table(directory + "prob_trans.py", [&](auto const& keys, double value) {
    model.at(state_count * (state_of(keys.at(0)) + 1u) + state_of(keys.at(1))) = value;
  });
  read_table(directory + "prob_emit.py", [&](auto const& keys, double value) {
    State const state = state_of(keys.at(0));
    if (!is_han(static_cast<wchar_t>(keys.at(1)))) return;
    emission.at(state_count * (keys.at(1) - first_han) + state) = value;
  });
  file.set(section_model, model);
  file.set(section_emission, emission);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: compile_dictionary JIEBA_DIRECTORY OUTPUT\n", stderr);
    return 2;
  }
  try {
    std::string const directory = argv[1];
    WordList const list = read_words(directory + "/dict.txt");
    DictionaryFile file;
    std::size_t const longest = add_words(file, list);
    add_model(file, directory + "/finalseg/");
    file.write(argv[2], list.total, longest);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "compile_dictionary: %s\n", error.what());
    return 1;
  }
  return 0;
}
