#pragma once

#include <vector>

#include "host/HString.h"
#include "host/HTessarineResult.h"
#include "host/Orlec/ParseFile.h"
#include "host/export.h"

/// Turns documents into plain text files in a temporary directory, for the segmenter to read, and
/// removes them again.
///
/// The directory is "Tessarine" below the directory of the running executable (see `HEnvironment`),
/// and in it one directory per document: the MD5 of its path, or for a parser the name that the
/// parser gives. Each parse writes one text file there, named by a new UUID and readable by its
/// owner only, so that parallel parses of one document cannot collide. Calling order:
/// `parse_to_txt`, reading the text, `del_parse_out_file` with the same list and the returned
/// directory.
class MORVA_EXPORT HClusterFileParser {
 public:
  HClusterFileParser();
  ~HClusterFileParser();

  /// Parses an opened document, which stays the caller's, and appends the path of its text file to
  /// `text_files`. Returns the working directory, ending in "/"; empty, with the list unchanged,
  /// when the parser is null or a directory cannot be made. A document whose parsing fails behind
  /// that point still gives its path and directory, but no file stands there.
  static HString parse_to_txt(Orlec::ParseFile* parser, std::vector<HString>& text_files);
  /// The same for a path. What an earlier run left in the working directory under the document's
  /// name and one of the part suffixes (".main", ".hf", ".comment", ...) is removed first. Empty
  /// also when there is no parser for the file; the directories stay then.
  static HString parse_to_txt(HString const& path, std::vector<HString>& text_files);
  /// The same; the result record is neither read nor written.
  static HString parse_to_txt(HString const& path, HTessarineResult& result,
                              std::vector<HString>& text_files);

  /// Deletes the files, then each directory that is empty, in order; nothing is reported. The
  /// "Tessarine" directory itself is never removed.
  static void del_parse_out_file(std::vector<HString> const& files,
                                 std::vector<HString> const& directories);
  /// The same with one directory, as `parse_to_txt` returns it.
  static void del_parse_out_file(std::vector<HString> const& files, HString const& directory);
};
