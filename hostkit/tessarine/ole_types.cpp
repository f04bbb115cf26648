#include "tessarine/ole_types.h"

#include <algorithm>
#include <array>
#include <string>

#include "tessarine/byte_reader.h"
#include "tessarine/ole_storage.h"
#include "tessarine/zip_types.h"

namespace tessarine {
namespace {

using namespace std::string_view_literals;

constexpr std::int64_t stream_head_limit = 64 << 10;
constexpr std::int64_t remains_limit = 512 << 10;

// Records of a workbook, by their numbers.
constexpr std::uint16_t record_end_of_file = 0x000a;
constexpr std::uint16_t record_file_password = 0x002f;
constexpr std::array<std::uint16_t, 4> records_begin{0x0009, 0x0209, 0x0409, 0x0809};

Recognition recognize_word(std::string_view stream, std::string const& name_suffix) {
  constexpr std::uint16_t flag_template = 0x0001;
  constexpr std::uint16_t flag_encrypted = 0x0100;
  auto const flags = little16(stream, 10);
  char const* suffix = (flags & flag_template) != 0 ? "dot" : "doc";
  if (name_suffix == "wps" || name_suffix == "wpt") {
    suffix = name_suffix == "wps" ? "wps" : "wpt";
  }
  return {FileType::doc, suffix, (flags & flag_encrypted) != 0};
}

// The record that asks for a password stands among the first ones of the globals.
bool has_workbook_password(std::string_view stream) {
  for (std::size_t offset = 0; offset + 4 <= stream.size();) {
    auto const record = little16(stream, offset);
    if (record == record_file_password) {
      return true;
    }
    if (record == record_end_of_file) {
      return false;
    }
    offset += 4U + little16(stream, offset + 2);
  }
  return false;
}

Recognition recognize_workbook(std::string_view stream, std::string const& name_suffix) {
  char const* suffix = "xls";
  if (name_suffix == "et" || name_suffix == "ett" || name_suffix == "xlt") {
    suffix = name_suffix == "et" ? "et" : name_suffix == "ett" ? "ett" : "xlt";
  }
  return {FileType::xls, suffix, has_workbook_password(stream)};
}

Recognition recognize_slides(std::string_view current_user, std::string const& name_suffix) {
  constexpr std::uint32_t token_encrypted = 0xf3d1c4df;
  char const* suffix = "ppt";
  for (auto const* const other : {"dps", "dpt", "pps", "pot"}) {
    suffix = name_suffix == other ? other : suffix;
  }
  return {FileType::ppt, suffix, little32(current_user, 12) == token_encrypted};
}

// An encrypted package shows nothing of its content, so that the name is all there is.
Recognition recognize_encrypted_package(std::string const& name_suffix) {
  auto recognition = office_type_by_name(name_suffix);
  if (recognition.type == FileType::unknown) {
    recognition = {FileType::docx, "docx"};
  }
  recognition.encrypted = true;
  return recognition;
}

// Where the directory cannot be followed, its entries may still be there: a name in UTF-16 at the
// beginning of each 128 bytes.
bool has_entry_left(std::string_view bytes, std::string_view name) {
  std::string wide;
  for (auto const character : name) {
    wide += character;
    wide += '\0';
  }
  wide.append(2, '\0');
  for (auto found = bytes.find(wide); found != std::string_view::npos;
       found = bytes.find(wide, found + 1)) {
    if (found % 128 == 0) {
      return true;
    }
  }
  return false;
}

// A presentation's stream begins with its own record, and that with one of a fixed size.
bool has_presentation_left(std::string_view bytes) {
  constexpr std::size_t smallest_sector = 512;
  constexpr std::size_t head_size = 8;
  for (std::size_t at = smallest_sector; at < bytes.size(); at += smallest_sector) {
    auto const sector = bytes.substr(at, smallest_sector);
    if (sector.starts_with("\x0f\0\xe8\3"sv) &&
        sector.substr(head_size).starts_with("\1\0\xe9\3\x28\0\0\0"sv)) {
      return true;
    }
  }
  return false;
}

Recognition recognize_remains(Orlec::Reader const& reader, std::string const& name_suffix) {
  auto const bytes = read_piece(reader, 0, remains_limit);
  auto const sector_size = little16(bytes, 30) == 12 ? std::size_t{4096} : std::size_t{512};
  auto const sector = std::string_view(bytes).substr(std::min(sector_size, bytes.size()));
  if (little16(sector, 0) == 0xa5ec || little16(sector, 0) == 0xa5dc) {
    return recognize_word(sector, name_suffix);
  }
  if (is_bare_workbook(sector)) {
    return recognize_workbook(sector, name_suffix);
  }
  if (has_entry_left(bytes, "PowerPoint Document") || has_entry_left(bytes, "PP40") ||
      has_presentation_left(bytes)) {
    return recognize_slides({}, name_suffix);
  }
  if (has_entry_left(bytes, "WordDocument")) {
    return recognize_word({}, name_suffix);
  }
  if (has_entry_left(bytes, "Workbook") || has_entry_left(bytes, "Book")) {
    return recognize_workbook({}, name_suffix);
  }
  return {FileType::ole_other, ""};
}

Recognition recognize_other_streams(OleStorage const& container) {
  struct Marker {
    std::string_view stream;
    FileType type;
    char const* suffix;
  };
  constexpr std::array markers{
      Marker{"__properties_version1.0", FileType::msg, "msg"},
      Marker{"__nameid_version1.0", FileType::msg, "msg"},
      Marker{"PP40", FileType::ppt, "ppt"},
      Marker{"VisioDocument", FileType::ole_other, "vsd"},
      Marker{"Quill", FileType::ole_other, "pub"},
      Marker{"MatOST", FileType::ole_other, "wps"},
      Marker{"CONTENTS", FileType::ole_other, "wps"},
      Marker{"FileHeader", FileType::ole_other, "hwp"},
      Marker{"   114", FileType::ole_other, "mpp"},
      Marker{"Catalog", FileType::ole_other, "db"},
  };
  auto const* const found =
      std::find_if(markers.begin(), markers.end(),
                   [&container](Marker const& marker) { return container.has(marker.stream); });
  return found == markers.end() ? Recognition{FileType::ole_other, ""}
                                : Recognition{found->type, found->suffix};
}

}  // namespace

bool is_ole(std::string_view head) {
  return head.starts_with("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1"sv);
}

bool is_bare_workbook(std::string_view head) {
  auto const record = little16(head, 0);
  auto const length = little16(head, 2);
  auto const kind = little16(head, 6);
  auto const is_begin =
      std::find(records_begin.begin(), records_begin.end(), record) != records_begin.end();
  return is_begin && length >= 4 && length <= 16 &&
         (kind == 0x0005 || kind == 0x0010 || kind == 0x0100);
}

Recognition recognize_ole(Orlec::Reader const& reader) {
  OleStorage const root(reader);
  auto const suffix = name_suffix(reader);
  if (!root.is_open()) {
    return recognize_remains(reader, suffix);
  }
  auto const recognition = recognize_ole_storage(root, suffix);
  bool const is_known = recognition.type != FileType::ole_other || *recognition.suffix != '\0';
  return is_known ? recognition : recognize_remains(reader, suffix);
}

Recognition recognize_ole_storage(OleStorage const& storage, std::string const& name_suffix) {
  if (storage.has("EncryptedPackage")) {
    return recognize_encrypted_package(name_suffix);
  }
  auto recognition = Recognition{};
  if (storage.has("PowerPoint Document")) {
    recognition = recognize_slides(storage.content("Current User", stream_head_limit), name_suffix);
  } else if (storage.has("WordDocument")) {
    recognition = recognize_word(storage.content("WordDocument", stream_head_limit), name_suffix);
  } else if (storage.has("Workbook")) {
    recognition = recognize_workbook(storage.content("Workbook", stream_head_limit), name_suffix);
  } else if (storage.has("Book")) {
    recognition = recognize_workbook(storage.content("Book", stream_head_limit), name_suffix);
  } else {
    recognition = recognize_other_streams(storage);
  }
  // Rights management wraps the whole document in one stream and leaves a stub in its place.
  auto const is_wrapped = storage.has("\tDRMContent") || storage.has("\tDRMViewerContent");
  recognition.encrypted = recognition.encrypted || is_wrapped;
  return recognition;
}

}  // namespace tessarine
