#include "morvakit/archive/archive.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "host/utf8.h"
#include "morvakit/archive/archive_component.h"
#include "morvakit/archive/archive_member.h"
#include "morvakit/archive/seven_zip.h"
#include "morvakit/formats.h"
#include "morvakit/text_flow.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

struct Kind {
  std::string_view suffix;
  ArchiveLayout layout;
  ArchivePacking packing;
};

constexpr std::string_view broken = "the archive is broken or cut short";

constexpr std::array kinds{
    Kind{"tar", ArchiveLayout::tar_or_file, ArchivePacking::none},
    Kind{"gz", ArchiveLayout::tar_or_file, ArchivePacking::gzip},
    Kind{"bz2", ArchiveLayout::tar_or_file, ArchivePacking::bzip2},
    Kind{"xz", ArchiveLayout::tar_or_file, ArchivePacking::xz},
    Kind{"lz", ArchiveLayout::tar_or_file, ArchivePacking::xz},
    Kind{"zst", ArchiveLayout::tar_or_file, ArchivePacking::zstd},
    Kind{"lz4", ArchiveLayout::tar_or_file, ArchivePacking::lz4},
    Kind{"rar", ArchiveLayout::rar, ArchivePacking::none},
    Kind{"cab", ArchiveLayout::cabinet, ArchivePacking::none},
    Kind{"cpio", ArchiveLayout::cpio, ArchivePacking::none},
    Kind{"ar", ArchiveLayout::ar, ArchivePacking::none},
};

/// What a packed file without a name of its own is called: as the archive, without its suffix.
std::string name_within(Orlec::Reader const& reader) {
  auto const path = morvabs::to_utf8(reader.GetPath().get_ws());
  auto const name = path.substr(path.rfind('/') + 1);
  return name.substr(0, name.rfind('.'));
}

class ArchiveReading {
 public:
  ArchiveReading(Orlec::Reader const& reader, ReadContext& context, ArchiveStream& archive)
      : reader_(reader), context_(context), archive_(archive), flow_(context) {}

  void read_all();

 private:
  void read_entry(ArchiveEntry const& entry);
  void read_file(ArchiveEntry const& entry, std::string const& name);
  void finish(ArchiveStream::Step step);

  Orlec::Reader const& reader_;
  ReadContext& context_;
  ArchiveStream& archive_;
  TextFlow flow_;
  std::vector<char> piece_ = std::vector<char>(std::size_t{64} << 10);
  std::int64_t entries_ = 0;
  std::int64_t unpacked_ = 0;
  bool has_open_file_ = false;
  bool has_locked_file_ = false;
};

void ArchiveReading::read_all() {
  auto const most = context_.limits().i_entries;
  ArchiveEntry entry;
  auto step = archive_.next(entry);
  for (; step == ArchiveStream::Step::entry; step = archive_.next(entry)) {
    if (++entries_ > most) {
      context_.end(ParseOutcome::limit_reached,
                   "a container of over " + std::to_string(most) + " entries");
      return;
    }
    read_entry(entry);
    if (!context_.keep_going()) {
      return;
    }
  }
  finish(step);
}

void ArchiveReading::read_entry(ArchiveEntry const& entry) {
  auto const name =
      entry.name.empty() ? name_within(reader_) : decode_member_name(entry.name, entry.name);
  if (!entry.name.empty()) {
    flow_.line(Orlec::ParseTextType_other, name);
  }
  if (entry.is_encrypted) {
    has_locked_file_ = true;
    context_.note(ParseOutcome::incomplete, "\"" + name + "\" needs a password");
    return;
  }
  has_open_file_ = has_open_file_ || entry.is_file;
  if (!entry.is_supported) {
    context_.note(ParseOutcome::incomplete, "\"" + name + "\": packed in a way not known here");
    return;
  }
  read_file(entry, name);
}

/// What is not wanted is unpacked all the same, within the bounds: otherwise the archive would skip
/// it, however much it unpacks to.
void ArchiveReading::read_file(ArchiveEntry const& entry, std::string const& name) {
  ArchiveMember member(name, context_);
  bool is_wanted = entry.is_file;
  for (;;) {
    auto const got = archive_.read(piece_.data(), piece_.size());
    if (got < 0 && entry.name.empty()) {
      context_.note(ParseOutcome::damaged, broken);
    } else if (got < 0) {
      context_.note(ParseOutcome::incomplete, "\"" + name + "\": cannot be unpacked");
    }
    if (got <= 0) {
      break;
    }
    unpacked_ += got;
    if (!context_.charge_expansion(reader_.GetSize(), unpacked_, got) || !context_.keep_going()) {
      break;
    }
    is_wanted = is_wanted && member.append({piece_.data(), static_cast<std::size_t>(got)});
  }
  if (!context_.ended()) {
    member.finish();
  }
}

void ArchiveReading::finish(ArchiveStream::Step step) {
  bool const is_locked = has_locked_file_ && !has_open_file_;
  if (step == ArchiveStream::Step::encrypted || is_locked) {
    context_.end(ParseOutcome::encrypted, "the archive needs a password");
  } else if (step == ArchiveStream::Step::damaged) {
    context_.end(ParseOutcome::damaged, broken);
  }
}

void read_stream(Orlec::Reader const& reader, ReadContext& context, ArchiveLayout layout,
                 ArchivePacking packing) {
  if (auto const archive = open_archive(reader, context, layout, packing)) {
    ArchiveReading(reader, context, *archive).read_all();
  }
}

}  // namespace

void read_zip_headers(Orlec::Reader const& reader, ReadContext& context) {
  read_stream(reader, context, ArchiveLayout::zip_headers, ArchivePacking::none);
  context.end(ParseOutcome::damaged, "the ZIP directory is missing");
}

void read_archive(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
                  ReadContext& context) {
  if (recognition.suffix == std::string_view("7z")) {
    read_seven_zip(reader, context);
    return;
  }
  for (auto const& kind : kinds) {
    if (recognition.suffix == kind.suffix) {
      read_stream(reader, context, kind.layout, kind.packing);
      return;
    }
  }
  context.end(ParseOutcome::not_supported, "packed in a way that is not known here");
}

}  // namespace morvakit
