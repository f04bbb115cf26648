#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "generated_documents.h"

namespace bench {

/// What the words of generated documents look like: Chinese ones are those of a dictionary, the
/// frequent ones first, the rarest and all Latin ones are made of syllables.
class GeneratedVocabulary {
 public:
  /// Takes the words of two and more Han characters from a list of jieba's form: a word, its
  /// frequency and its part of speech a line. Without them where the list cannot be read.
  explicit GeneratedVocabulary(std::string const& dictionary);

  bool has_chinese() const { return !chinese_.empty(); }
  /// UTF-8.
  std::string text(GeneratedWord word) const;

 private:
  std::vector<std::string> chinese_;
};

/// A file of a generated document.
struct GeneratedFile {
  /// With the number in front, and its suffix.
  std::string name;
  std::string content;
};

/// The document of this number as a file: three of four are plain text, the others HTML; of a
/// thousand files two are empty and three no documents at all, whatever their suffix says.
GeneratedFile generated_file(GeneratedDocuments const& documents, std::size_t number,
                             GeneratedVocabulary const& vocabulary);

}  // namespace bench
