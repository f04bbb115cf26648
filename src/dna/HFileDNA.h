#pragma once

#include <vector>

#include "host/HString.h"
#include "host/HTessarineResult.h"
#include "host/Orlec/ParseFile.h"
#include "host/export.h"
#include "numeric/HPointN.h"

/// The file DNA: the fingerprint (see `HFileSimHash`) of all the words of a file or text, and its
/// conversion to and from a point of 128 dimensions, so that fingerprints can be clustered.
///
/// A DNA is a text: 32 digits (narrow) or up to 1024 (wide), empty where none could be made. The
/// count that several operations give is the number of characters that the file's words cover, each
/// word's length times its occurrences; its pointer may always be null. An operation is true
/// exactly if there is a DNA. From one thread at a time.
class MORVA_EXPORT HFileDNA {
 public:
  /// The DNA length in force in this process: 1024 is the wide form, any other value the narrow
  /// one. Set only by the operations that take a length, and stays for all later work.
  static int mi_dna_length;

  HFileDNA();
  ~HFileDNA();

  /// `mi_dna_length`.
  static int get_dna_length();

  /// The point of a wide DNA: each field less 2147483647, over 1000000. A DNA that is not 1024
  /// characters long gives an empty point and one log line.
  static HPointN get_pointn(HString label, HString str_dna);
  /// The wide DNA of a point of 128 dimensions, the inverse of `get_pointn` up to rounding: values
  /// are truncated and, above 2147.483647, wrap around. A value that no 64-bit integer can hold
  /// gives the field "0". A point of another size gives "0" and one log line.
  static HString get_dna(HPointN point);

  /// The DNA of a text. Sets the DNA length.
  static bool get_file_centent_dna(HString const& text, HString const& name, HString& str_dna,
                                   int* count, int length);
  /// From a parser whose `InitFile` has run with a callback in memory. Where there is no main text,
  /// nothing changes; otherwise as for a text.
  static bool get_file_dna(Orlec::ParseFile* parser, HString& str_dna, int* count, int length);
  /// From a file, parsed in memory; at most 10485760 characters of its main text count.
  static bool get_file_dna(HString const& path, HString& str_dna, int* count, int length);
  /// From a file, through a temporary text file, or with `parse_first` false from a file that holds
  /// text already. Uses the DNA length in force; adds the count to `i_word` of the record.
  static bool get_file_dna(HString const& path, HString& str_dna, HTessarineResult& result,
                           bool parse_first);
  /// The DNA of several files together, as above. Without a dictionary `str_dna` stays as it was,
  /// and the result then says whether it held something.
  static bool get_file_dna(std::vector<HString> const& files, HString& str_dna, bool parse_first,
                           int* count);
};
