#include "host/Orlec/ParseFile.h"

#include <string>

#include "host/Orlec/Global.h"
#include "host/utf8.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/read_context.h"

#include "tessarine/file_type.h"

namespace Orlec {

struct ParseFile::State {
  Reader const* reader = nullptr;
  HString directory;
  HString name;
  HString alias;
  HString known_as;     ///< what `GetFileAlias` gives
  HString folder_name;  ///< what `GetFileFolderName` gives
  long long size = 0;
  int mask = 1;
  TextCallback* callback = nullptr;
  std::unique_ptr<TextCallback> owned_callback;
  ParseOutcome outcome = ParseOutcome::not_parsed;
  std::string reason;
  ParseCounts counts;

  HString full_path() const;
  void update_names();
};

HString ParseFile::State::full_path() const {
  auto const& opened_as = reader->GetPath();
  if (directory.empty() && name.empty()) {
    return opened_as;
  }
  HString path = directory.empty() ? opened_as.get_path(true) : directory;
  path.dir_fit(true);
  return path + (name.empty() ? opened_as.get_short_name() : name);
}

void ParseFile::State::update_names() {
  known_as = alias;
  if (known_as.empty()) {
    known_as = name.empty() ? reader->GetPath().get_short_name() : name;
  }
  folder_name = full_path().get_md5_std_format(HString());
}

ParseFile::ParseFile(Reader const& reader) : state_(std::make_unique<State>()) {
  state_->reader = &reader;
  state_->update_names();
}

ParseFile::~ParseFile() = default;

void ParseFile::SetFilePath(HString const& directory) {
  state_->directory = directory;
  state_->update_names();
}

void ParseFile::SetFileName(HString const& name) {
  state_->name = name;
  state_->update_names();
}

void ParseFile::SetFileAlias(HString const& alias) {
  state_->alias = alias;
  state_->update_names();
}

void ParseFile::SetFileSize(long long size) {
  state_->size = size;
}

void ParseFile::SetMask(int mask) {
  state_->mask = mask;
}

void ParseFile::SetCallBack(TextCallback* callback, bool owned) {
  if (callback != state_->owned_callback.get()) {
    state_->owned_callback.reset(owned ? callback : nullptr);
  } else if (!owned) {
    static_cast<void>(state_->owned_callback.release());
  }
  state_->callback = callback;
}

TextLineCallback* ParseFile::GetTextCallback() const {
  return dynamic_cast<TextLineCallback*>(state_->callback);
}

HString ParseFile::GetFileFullPath() const {
  return state_->full_path();
}

ParseOutcome ParseFile::GetOutcome() const {
  return state_->outcome;
}

HString ParseFile::GetReason() const {
  return HString(state_->reason.c_str());
}

ParseCounts ParseFile::GetCounts() const {
  return state_->counts;
}

namespace {

bool gives_text(ParseOutcome outcome) {
  return outcome == ParseOutcome::text || outcome == ParseOutcome::no_text ||
         outcome == ParseOutcome::incomplete || outcome == ParseOutcome::limit_reached ||
         outcome == ParseOutcome::timed_out;
}

/// The parser for all formats: what differs between them is the function that reads.
class DocumentParser final : public ParseFile {
 public:
  DocumentParser(Reader const& reader, tessarine::Recognition const& recognition)
      : ParseFile(reader), recognition_(recognition) {}

  bool InitFile() override;
  HString const& GetFileAlias() const override { return state_->known_as; }
  HString const& GetFileFolderName() const override { return state_->folder_name; }

 private:
  tessarine::Recognition recognition_;
};

bool DocumentParser::InitFile() {
  auto* const callback = state_->callback;
  bool const wants_text = (state_->mask & 1) != 0;
  morvakit::ReadContext context(wants_text ? callback : nullptr, Global::pins()->limits,
                                state_->reader);
  if (callback != nullptr) {
    callback->OnBegin();
  }
  morvakit::read_document(*state_->reader, recognition_, context);
  state_->counts = context.counts();
  state_->outcome = context.outcome();
  state_->reason = context.reason();
  if (callback != nullptr && !callback->OnEnd(gives_text(state_->outcome))) {
    state_->outcome = ParseOutcome::failed;
    state_->reason = "the text cannot be written";
    auto const reason = callback->GetStopReason();
    if (reason.not_empty()) {
      state_->reason = morvabs::to_utf8(reason.get_ws());
    }
  }
  return gives_text(state_->outcome);
}

bool is_readable(Reader const* reader) {
  if (reader == nullptr) {
    return false;
  }
  auto const* const file = dynamic_cast<IFile const*>(reader);
  return file == nullptr || file->IsOpen();
}

}  // namespace

ParseFile* GetParser(Reader* reader, bool /*reserved*/) {
  if (!is_readable(reader)) {
    return nullptr;
  }
  auto const recognition = tessarine::recognize(*reader);
  if (!recognition.encrypted && !morvakit::find_format(recognition.type).is_readable()) {
    return nullptr;
  }
  return std::make_unique<DocumentParser>(*reader, recognition).release();
}

HString GetOutcomeName(ParseOutcome outcome) {
  switch (outcome) {
    case ParseOutcome::not_parsed:
      return HString("not parsed");
    case ParseOutcome::text:
      return HString("text");
    case ParseOutcome::no_text:
      return HString("no text");
    case ParseOutcome::encrypted:
      return HString("encrypted");
    case ParseOutcome::not_supported:
      return HString("not supported");
    case ParseOutcome::incomplete:
      return HString("incomplete");
    case ParseOutcome::damaged:
      return HString("damaged");
    case ParseOutcome::limit_reached:
      return HString("limit reached");
    case ParseOutcome::timed_out:
      return HString("timed out");
    case ParseOutcome::failed:
      return HString("failed");
  }
  return HString();
}

}  // namespace Orlec
