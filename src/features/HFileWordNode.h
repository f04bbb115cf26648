#pragma once

#include <vector>

#include "host/HString.h"
#include "host/WordNode.h"
#include "host/export.h"

/// The words of a text, of a text file, or of several text files merged: the one place where the
/// system calls the segmenter.
///
/// All three forms empty `words` first, set the dictionary directory anew from the locator, and
/// return whether there is a dictionary: without one the segmenter is not called and one line is
/// logged at level
/// 1. True with an empty list is a text without words. `top` is the greatest number of words to ask
/// for; below 1 it stands for 100000. From one thread at a time.
class MORVA_EXPORT HFileWordNode {
 public:
  HFileWordNode();
  ~HFileWordNode();

  /// The words of a text. At log level 4 exactly, two lines tell the memory in use before and
  /// after.
  static bool get_file_word_node(HString const& text, HString const& name,
                                 std::vector<WordNode>& words, int top);
  /// The words of a text file; none where it cannot be read.
  static bool get_file_word_node(HString const& file, std::vector<WordNode>& words, int top);
  /// Files that do not exist are skipped silently; the lists of the others are merged.
  static bool get_file_word_node(std::vector<HString> const& files, std::vector<WordNode>& words,
                                 int top);

  /// Appends to `merged` each word at its first appearance, and divides its weight by the number of
  /// times that it was met in all lists: a word that is spread over many parts is damped, and the
  /// later weights play no part. Count, tag and the other fields stay those of the first
  /// appearance. A word that was in `merged` before the call is dropped, and that node stays as it
  /// is. Returns the size of `merged`.
  static unsigned int get_vt_word_node(std::vector<std::vector<WordNode>> const& lists,
                                       std::vector<WordNode>& merged);
};
