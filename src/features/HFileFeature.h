#pragma once

#include <vector>

#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/Orlec/ParseFile.h"
#include "host/export.h"

/// Fills a feature record with the top 100 words of a document's main text, at most 10485760
/// characters of it.
///
/// All operations but the path form empty the record's lists first; on failure they stay empty. A
/// failure is told by false and, where `Orlec::Global` asks for it, one assertion record.
class MORVA_EXPORT HFileFeature {
 public:
  HFileFeature();
  ~HFileFeature();

  /// From text files, merged by `HFileWordNode`. Where the record has no file name, that of the
  /// first path is taken. False only without a dictionary; a list without words gives true.
  static bool get_vt_file_feature(std::vector<HString> const& files, HFeatureNode& node);
  /// The same from documents, which are turned into temporary text files first, or with
  /// `parse_first` false from files that hold text already. The temporary files are removed.
  static bool get_file_feature(std::vector<HString> const& files, HFeatureNode& node,
                               bool parse_first);
  /// From a text. The record takes the short name of `name`.
  static bool get_file_centent_feature(HString const& text, HString const& name,
                                       HFeatureNode& node);
  /// From a parser whose `InitFile` has run with a callback in memory. False when it has no
  /// callback, no main text or an empty one.
  static bool get_file_feature(Orlec::ParseFile* parser, HFeatureNode& node);
  /// From a file; the last argument is not read. A file name preset in the record is the name that
  /// the parser knows the document by. False, with the record as it was, when there is no parser
  /// for the file or parsing fails. Each call leaves one small unused callback object behind, under
  /// 1 KiB, and a call whose parsing fails its emptied parser and callback too, under 2.5 KiB in
  /// all, that are never released. The form that takes a parser leaves nothing.
  static bool get_file_feature(HString const& path, HFeatureNode& node, bool reserved);
};
