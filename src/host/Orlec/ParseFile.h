#pragma once

#include <cstdint>
#include <memory>

#include "host/HString.h"
#include "host/Orlec/IFile.h"
#include "host/Orlec/TextCallback.h"
#include "host/export.h"

namespace Orlec {

/// How a parse ended.
enum class ParseOutcome {
  not_parsed,     ///< `InitFile` has not run
  text,           ///< read, with main text
  no_text,        ///< read, and its main text is empty (a scanned page, an empty document)
  encrypted,      ///< needs a password
  not_supported,  ///< the type is known but there is no reader for it here
  incomplete,     ///< read, but for something beside the document's own text: an embedded file that
                  ///< is damaged or needs a password, or properties or notes that are damaged
  damaged,        ///< the format's rules are broken; the text up to there was delivered
  limit_reached,  ///< a bound of `ParseLimits` was hit; the text up to there was delivered
  timed_out,      ///< the time of `ParseLimits` was used up; the text up to there was delivered
  failed,         ///< reading the file or writing the output failed
};

/// What a document is made of beside its text, as far as its format tells; 0 where it does not.
struct ParseCounts {
  /// Lines of main text that are not empty, as they were delivered.
  std::int64_t i_line = 0;
  /// Pages, slides or sheets. For a format that leaves the breaking into pages to the program that
  /// shows it, the number that the document states.
  std::int64_t i_page = 0;
  /// Pictures in the document, not in what is embedded in it.
  std::int64_t i_img = 0;
  /// Files embedded in, attached to or packed into it, at all depths.
  std::int64_t i_embed = 0;
};

/// A parser for one file. Made by `GetParser`, owned by the caller, good for one parse.
class MORVA_EXPORT ParseFile {
 public:
  virtual ~ParseFile();
  ParseFile(ParseFile const&) = delete;
  ParseFile& operator=(ParseFile const&) = delete;

  /// Parses the file, filling the callback. True when there is text to be used: outcomes `text`,
  /// `no_text`, `incomplete`, `limit_reached` and `timed_out`.
  virtual bool InitFile() = 0;
  /// The name that the parser knows the file by: the alias where one that is not empty was set,
  /// else the file name set, else the name in the path.
  virtual HString const& GetFileAlias() const = 0;
  /// A name that is safe as a directory name and differs from file to file: the MD5 of the full
  /// path.
  virtual HString const& GetFileFolderName() const = 0;

  /// The directory that the document is said to lie in, for the full path and the folder name; the
  /// file itself stays the one that was opened.
  void SetFilePath(HString const& directory);
  /// The name that it is said to have there, and goes by where there is no alias.
  void SetFileName(HString const& name);
  /// The name that the document goes by, as in records of its words; empty: no alias.
  void SetFileAlias(HString const& alias);
  /// The size that the host knows, in bytes; it is kept and changes nothing.
  void SetFileSize(long long size);
  /// Which kinds of content to extract: bit 0, the text; other bits are reserved.
  void SetMask(int mask);
  /// The callback stays the caller's with false; with true the parser ends it.
  void SetCallBack(TextCallback* callback, bool owned);
  /// The callback, null if none was set. It is the caller's object, so that it may be cast back.
  TextLineCallback* GetTextCallback() const;
  /// Directory and name where they were set, else the path that the file was opened by.
  HString GetFileFullPath() const;

  /// How the parse ended; `not_parsed` before it.
  ParseOutcome GetOutcome() const;
  /// One English phrase behind the outcome, such as "the ZIP directory is missing"; empty for
  /// `text`.
  HString GetReason() const;
  /// What was counted by the parse; all 0 before it.
  ParseCounts GetCounts() const;

 protected:
  /// For parsers: the reader is to outlive the object.
  explicit ParseFile(Reader const& reader);

  /// What has been set, and what the parse found.
  struct State;
  /// Never null.
  std::unique_ptr<State> state_;
};

/// A new parser for the file's type, which its content decides; null when the type is not parsable
/// or the file could not be opened. The second argument is reserved and is to be false.
MORVA_EXPORT ParseFile* GetParser(Reader* reader, bool reserved);

/// Plain word for an outcome, as "encrypted".
MORVA_EXPORT HString GetOutcomeName(ParseOutcome outcome);

}  // namespace Orlec
