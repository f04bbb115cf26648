#include "generated_texts.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string_view>
#include <utility>

namespace bench {

namespace {

constexpr std::size_t bytes_of_han = 3;

// Nothing but characters of three bytes, as all frequent Han characters have.
bool is_han_word(std::string const& word) {
  return word.size() >= 2 * bytes_of_han && std::all_of(word.begin(), word.end(), [](char byte) {
           return (static_cast<unsigned char>(byte) & 0x80U) != 0;
         });
}

std::vector<std::string> words_by_frequency(std::string const& path) {
  std::vector<std::pair<long, std::string>> found;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    std::string word;
    long frequency = 0;
    if (fields >> word >> frequency && is_han_word(word)) {
      found.emplace_back(-frequency, std::move(word));
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> words;
  for (auto& [frequency, word] : found) {
    words.push_back(std::move(word));
  }
  return words;
}

// Two syllables for the frequent words, more for the others; neighbours by rank are not alike.
std::string syllables(std::uint64_t rank) {
  constexpr std::string_view consonants = "bcdfghjklmnprstvz";
  constexpr std::string_view vowels = "aeiou";
  constexpr std::uint64_t all = consonants.size() * vowels.size();
  constexpr std::uint64_t stride = 4099;
  std::uint64_t count = all * all;
  int length = 2;
  for (; rank >= count; ++length) {
    rank -= count;
    count *= all;
  }
  std::uint64_t left = rank * stride % count;
  std::string word;
  for (int i = 0; i < length; ++i, left /= all) {
    word += consonants[left % all / vowels.size()];
    word += vowels[left % vowels.size()];
  }
  return word;
}

bool is_ascii(std::string const& text) {
  return static_cast<unsigned char>(text.front()) < 0x80;
}

// A sentence: Latin words stand apart from each other, Chinese ones do not.
std::string sentence(std::vector<std::string> const& words) {
  std::string text;
  bool was_latin = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    bool const is_latin = is_ascii(words[i]);
    if (i > 0 && i == words.size() / 2) {
      text += is_latin ? ", " : "，";
    } else if (is_latin && was_latin) {
      text += ' ';
    }
    text += words[i];
    was_latin = is_latin;
  }
  return text + (was_latin ? ". " : "。");
}

// Paragraphs of sentences, whose lengths are by number, as all that is not of the words.
std::vector<std::string> paragraphs(GeneratedDocument const& document, std::size_t number,
                                    GeneratedVocabulary const& vocabulary) {
  constexpr std::size_t sentences_of_paragraph = 5;
  std::vector<std::string> result;
  std::vector<std::string> words;
  std::size_t sentences = 0;
  std::size_t length = 0;
  for (std::size_t i = 0; i < document.words.size(); ++i) {
    if (words.empty()) {
      length = 6 + mixed(number * 1000 + sentences) % 14;
    }
    words.push_back(vocabulary.text(document.words[i]));
    if (words.size() >= length || i + 1 == document.words.size()) {
      if (sentences++ % sentences_of_paragraph == 0) {
        result.emplace_back();
      }
      result.back() += sentence(words);
      words.clear();
    }
  }
  return result;
}

std::string as_text(std::vector<std::string> const& paragraphs) {
  std::string text;
  for (std::string const& paragraph : paragraphs) {
    text += paragraph + '\n';
  }
  return text;
}

std::string as_html(std::vector<std::string> const& paragraphs) {
  std::string text = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"></head><body>\n";
  for (std::string const& paragraph : paragraphs) {
    text += "<p class=\"text\">" + paragraph + "</p>\n";
  }
  return text + "</body></html>\n";
}

}  // namespace

GeneratedVocabulary::GeneratedVocabulary(std::string const& dictionary)
    : chinese_(words_by_frequency(dictionary)) {}

std::string GeneratedVocabulary::text(GeneratedWord word) const {
  std::size_t const rank = word / 2;
  bool const is_latin = word % 2 != 0;
  return is_latin || rank >= chinese_.size() ? syllables(word) : chinese_[rank];
}

GeneratedFile generated_file(GeneratedDocuments const& documents, std::size_t number,
                             GeneratedVocabulary const& vocabulary) {
  char digits[24];
  std::snprintf(digits, sizeof digits, "%09zu", number);
  GeneratedFile file{digits, {}};
  std::uint64_t const kind = mixed(~number) % 1000;
  if (kind < 2) {
    file.name += ".txt";
  } else if (kind < 5) {
    file.name += ".docx";
    // As a container that was cut off.
    file.content = "PK\x03\x04 cut off";
  } else {
    bool const is_html = kind < 255;
    auto const text = paragraphs(documents.document(number), number, vocabulary);
    file.name += is_html ? ".html" : ".txt";
    file.content = is_html ? as_html(text) : as_text(text);
  }
  return file;
}

}  // namespace bench
