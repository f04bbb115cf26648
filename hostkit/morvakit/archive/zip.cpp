#include <string>

#include "host/utf8.h"
#include "morvakit/archive/archive.h"
#include "morvakit/archive/archive_member.h"
#include "morvakit/archive/zip_container.h"
#include "morvakit/formats.h"
#include "morvakit/text_flow.h"

namespace morvakit {

namespace {

/// Names that show in which encoding those are that are not in UTF-8.
std::string sample_of_names(ZipContainer const& container) {
  constexpr std::size_t enough = std::size_t{64} << 10;
  std::string sample;
  for (std::uint64_t i = 0; i < container.count() && sample.size() < enough; ++i) {
    if (!morvabs::is_utf8(container.name(i))) {
      sample += container.name(i);
      sample += '\n';
    }
  }
  return sample;
}

/// Whether there are files in the archive, all of which need a password.
bool is_locked(ZipContainer const& container) {
  bool has_locked = false;
  for (std::uint64_t i = 0; i < container.count(); ++i) {
    if (container.is_encrypted(i)) {
      has_locked = true;
    } else if (!container.name(i).ends_with('/')) {
      return false;
    }
  }
  return has_locked;
}

/// Reads one member; false when the reading of the archive is to stop.
bool read_member(ZipContainer& container, std::uint64_t index, std::string const& name,
                 ReadContext& context) {
  ArchiveMember member(name, context);
  container.read_member(index, name, [&](std::string_view bytes) { return member.append(bytes); });
  return member.finish();
}

}  // namespace

void read_zip(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  ZipContainer container(reader, context, ZipContainer::Directory::may_be_broken);
  if (!container.is_open()) {
    if (!context.ended()) {
      read_zip_headers(reader, context);
    }
    return;
  }
  auto const sample = sample_of_names(container);
  TextFlow flow(context);
  for (std::uint64_t i = 0; i < container.count() && context.keep_going(); ++i) {
    flow.line(Orlec::ParseTextType_other, decode_member_name(container.name(i), sample));
  }
  if (is_locked(container)) {
    context.end(Orlec::ParseOutcome::encrypted, "the archive needs a password");
    return;
  }
  for (std::uint64_t i = 0; i < container.count(); ++i) {
    auto const name = decode_member_name(container.name(i), sample);
    if (!read_member(container, i, name, context)) {
      return;
    }
  }
}

}  // namespace morvakit
