#include "tessarine/ole_types.h"

#include <algorithm>
#include <array>
#include <string>

#include "tessarine/byte_reader.h"
#include "tessarine/ole_container.h"

namespace tessarine {
namespace {

using namespace std::string_view_literals;

constexpr std::int64_t stream_head_limit = 64 << 10;

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
  constexpr std::array words{"docx", "docm", "dotx", "dotm"};
  constexpr std::array books{"xlsx", "xlsm", "xltx", "xltm", "xlam"};
  constexpr std::array slides{"pptx", "pptm", "potx", "potm", "ppsx", "ppsm"};
  auto const find = [&name_suffix](auto const& names, FileType type) {
    auto const* const found = std::find(names.begin(), names.end(), name_suffix);
    return found == names.end() ? Recognition{} : Recognition{type, *found, true};
  };
  for (auto const& recognition :
       {find(words, FileType::docx), find(books, FileType::xlsx), find(slides, FileType::pptx)}) {
    if (recognition.type != FileType::unknown) {
      return recognition;
    }
  }
  return name_suffix == "xlsb" ? Recognition{FileType::xlsb, "xlsb", true}
                               : Recognition{FileType::docx, "docx", true};
}

// The stream that a container begins with usually starts in its first sector.
Recognition recognize_first_sector(Orlec::Reader const& reader, std::string const& name_suffix) {
  auto const header = read_piece(reader, 0, 512);
  auto const shift = little16(header, 30);
  auto const sector = read_piece(reader, shift == 12 ? 4096 : 512, stream_head_limit);
  if (little16(sector, 0) == 0xa5ec || little16(sector, 0) == 0xa5dc) {
    return recognize_word(sector, name_suffix);
  }
  if (is_bare_workbook(sector)) {
    return recognize_workbook(sector, name_suffix);
  }
  if (sector.starts_with("\x0f\0\xe8\3"sv) ||
      sector.find("P\0o\0w\0e\0r\0P\0o\0i\0n\0t\0 \0D\0"sv) != std::string::npos) {
    return recognize_slides({}, name_suffix);
  }
  return {FileType::ole_other, ""};
}

Recognition recognize_other_streams(OleContainer const& container) {
  struct Marker {
    std::string_view stream;
    FileType type;
    char const* suffix;
  };
  constexpr std::array markers{
      Marker{"__properties_version1.0", FileType::msg, "msg"},
      Marker{"__nameid_version1.0", FileType::msg, "msg"},
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
  OleContainer const container(reader);
  auto const suffix = name_suffix(reader);
  if (!container.is_open()) {
    return recognize_first_sector(reader, suffix);
  }
  if (container.has("EncryptedPackage")) {
    return recognize_encrypted_package(suffix);
  }
  // Rights management wraps the whole document in one stream and leaves a stub in its place.
  auto const is_wrapped = container.has("\tDRMContent") || container.has("\tDRMViewerContent");
  auto recognition = Recognition{};
  if (container.has("PowerPoint Document")) {
    recognition = recognize_slides(container.content("Current User", stream_head_limit), suffix);
  } else if (container.has("WordDocument")) {
    recognition = recognize_word(container.content("WordDocument", stream_head_limit), suffix);
  } else if (container.has("Workbook")) {
    recognition = recognize_workbook(container.content("Workbook", stream_head_limit), suffix);
  } else if (container.has("Book")) {
    recognition = recognize_workbook(container.content("Book", stream_head_limit), suffix);
  } else {
    recognition = recognize_other_streams(container);
  }
  recognition.encrypted = recognition.encrypted || is_wrapped;
  return recognition;
}

}  // namespace tessarine
