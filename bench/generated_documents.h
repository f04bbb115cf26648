#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace bench {

/// A made-up language has words without end, which are told by number: two times the rank of the
/// word by frequency, and 1 more where it is Latin.
using GeneratedWord = std::uint32_t;

/// A document as its words in the order of its text.
struct GeneratedDocument {
  bool is_latin = false;
  /// What it is about: each topic prefers words of its own.
  std::uint32_t topic = 0;
  std::vector<GeneratedWord> words;
};

/// Documents as an archive has them, as many as one asks for. What a document is depends on the
/// seed and its number alone, so that the first documents are the same for any count, and parts can
/// be made anywhere. Only operations that are exactly rounded go into it: the same on every
/// machine.
///
/// Words follow the law of Zipf and Mandelbrot with the exponent 5/3, so that the vocabulary grows
/// with the power 0.6 of the text, as Heaps has it. A third of the words are those of one of sixty
/// topics of unequal sizes; a seventh was in the document before (Simon, On a class of skew
/// distribution functions, 1955). Lengths are nearly log-normal, 300 words in the middle. Seven of
/// ten documents are Chinese, the others Latin, with some words of the other language. Six of a
/// hundred are revisions of an earlier one, in which up to a twentieth of the words is changed.
class GeneratedDocuments {
 public:
  explicit GeneratedDocuments(std::uint64_t seed = 1) : seed_(seed) {}

  /// The document of this number.
  GeneratedDocument document(std::size_t number) const;

 private:
  std::uint64_t seed_;
};

/// The words of a document that stand in it most often, at most 100, by number, and weights as a
/// ranking gives them: 1 for the first, about 0.4 for the tenth and 0.15 for the last. An empty
/// document has none.
std::vector<std::pair<GeneratedWord, double>> strongest_words(GeneratedDocument const& document);

/// Bits that look random and are the same for the same value.
std::uint64_t mixed(std::uint64_t value);

}  // namespace bench
