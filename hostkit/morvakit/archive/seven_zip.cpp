#include "morvakit/archive/seven_zip.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "morvakit/archive/archive_component.h"
#include "morvakit/archive/archive_member.h"
#include "morvakit/archive/seven_zip_directory.h"
#include "morvakit/text_flow.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

/// The unpacked bytes of a folder, one piece after the other.
class FolderContent {
 public:
  FolderContent(Orlec::Reader const& reader, SevenZipFolder const& folder, ReadContext& context)
      : data_(reader, {}, folder.offset, folder.packed) {
    if (!folder.steps.empty()) {
      unpacker_ = open_lzma(data_, context, folder.steps, folder.unpacked);
    }
  }

  /// At most `limit` bytes; empty at the end and behind a fault.
  std::string_view next(std::int64_t limit) {
    if (rest_.empty()) {
      rest_ = unpacker_ ? unpacker_->next() : stored();
    }
    auto const piece = rest_.substr(0, static_cast<std::size_t>(limit));
    rest_.remove_prefix(piece.size());
    return piece;
  }

 private:
  std::string_view stored() {
    buffer_ = tessarine::read_piece(data_, position_, std::int64_t{64} << 10);
    position_ += static_cast<std::int64_t>(buffer_.size());
    return buffer_;
  }

  ReaderSlice data_;
  std::unique_ptr<LzmaUnpacker> unpacker_;
  std::string buffer_;
  std::int64_t position_ = 0;
  std::string_view rest_;
};

class SevenZipReading {
 public:
  SevenZipReading(Orlec::Reader const& reader, SevenZipDirectory const& directory,
                  ReadContext& context)
      : reader_(reader), directory_(directory), context_(context) {}

  void read_all();

 private:
  std::string next_name();
  void read_folder(SevenZipFolder const& folder);
  bool read_file(FolderContent& content, std::string const& name, std::int64_t size);

  Orlec::Reader const& reader_;
  SevenZipDirectory const& directory_;
  ReadContext& context_;
  std::size_t file_ = 0;
  std::int64_t unpacked_ = 0;
};

/// Files without content have no place in the folders.
std::string SevenZipReading::next_name() {
  auto const& files = directory_.files;
  while (file_ < files.size() && !files[file_].has_content) {
    ++file_;
  }
  return file_ < files.size() ? files[file_++].name : std::string();
}

void SevenZipReading::read_all() {
  for (auto const& folder : directory_.folders) {
    read_folder(folder);
    if (!context_.keep_going()) {
      return;
    }
  }
}

void SevenZipReading::read_folder(SevenZipFolder const& folder) {
  std::optional<FolderContent> content;
  if (folder.is_supported && !folder.is_encrypted) {
    content.emplace(reader_, folder, context_);
    if (context_.ended()) {
      return;
    }
  }
  bool is_readable = true;
  for (auto const size : folder.files) {
    auto const name = next_name();
    if (folder.is_encrypted) {
      context_.note(ParseOutcome::incomplete, "\"" + name + "\" needs a password");
    } else if (!content) {
      context_.note(ParseOutcome::incomplete, "\"" + name + "\": packed in a way not known here");
    } else {
      is_readable = is_readable && read_file(*content, name, size);
    }
  }
}

/// False when nothing behind the file can be read.
bool SevenZipReading::read_file(FolderContent& content, std::string const& name,
                                std::int64_t size) {
  ArchiveMember member(name, context_);
  auto rest = size;
  while (rest > 0) {
    auto const piece = content.next(rest);
    auto const got = static_cast<std::int64_t>(piece.size());
    if (got == 0) {
      context_.note(ParseOutcome::incomplete, "\"" + name + "\": cannot be unpacked");
      break;
    }
    rest -= got;
    unpacked_ += got;
    if (!context_.charge_expansion(reader_.GetSize(), unpacked_, got) || !context_.keep_going()) {
      return false;
    }
    member.append(piece);
  }
  return member.finish() && rest == 0;
}

}  // namespace

void read_seven_zip(Orlec::Reader const& reader, ReadContext& context) {
  auto const directory = read_seven_zip_directory(reader, context);
  if (context.ended()) {
    return;
  }
  TextFlow flow(context);
  for (auto const& file : directory.files) {
    flow.line(Orlec::ParseTextType_other, file.name);
    if (!context.keep_going()) {
      return;
    }
  }
  auto const& folders = directory.folders;
  if (!folders.empty() && std::all_of(folders.begin(), folders.end(),
                                      [](auto const& folder) { return folder.is_encrypted; })) {
    context.end(ParseOutcome::encrypted, "the archive needs a password");
    return;
  }
  SevenZipReading(reader, directory, context).read_all();
}

}  // namespace morvakit
