#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Knows where the dictionaries of the segmenter lie: the compiled dictionary "morvajieba.dict",
/// and beside it, both optional, "user.dict" (own words, jieba's format: word, frequency, tag) and
/// "stop_words" (one per line, in addition to those built in). All of them are to be replaced by
/// renaming a new file over the old one: the dictionary is mapped while it is used.
class MORVA_EXPORT HStutterDict {
 public:
  /// The dictionaries' directory, with or without a separator at its end; until it is set, the one
  /// that `Orlec::LocateMgr` gives. Empty means that there are none.
  HString mstr_dict_path;

  /// The singleton; both names give the same object.
  static HStutterDict* ins();
  /// The singleton; `ins` gives the same object.
  static HStutterDict* pins();

  /// Sets `mstr_dict_path`; whether a dictionary is there shows at the next use.
  void set_dict_path(HString const& directory);
  /// True when the directory holds a compiled dictionary that can be used.
  bool is_exist_dict() const;

 private:
  HStutterDict();
};
