#include "tessarine/signatures.h"

#include <algorithm>
#include <array>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

using namespace std::string_view_literals;

struct Signature {
  std::string_view bytes;
  FileType type;
  char const* suffix;
};

// Signatures of two or three printable letters stand elsewhere: a text may begin like that.
constexpr std::array signatures{
    Signature{"\x89PNG\r\n\x1a\n"sv, FileType::image, "png"},
    Signature{"\xff\xd8\xff"sv, FileType::image, "jpg"},
    Signature{"GIF87a"sv, FileType::image, "gif"},
    Signature{"GIF89a"sv, FileType::image, "gif"},
    Signature{"II*\0"sv, FileType::image, "tif"},
    Signature{"MM\0*"sv, FileType::image, "tif"},
    Signature{"8BPS\0\1"sv, FileType::image, "psd"},
    Signature{"\0\0\1\0"sv, FileType::image, "ico"},
    Signature{"\xd7\xcd\xc6\x9a"sv, FileType::image, "wmf"},
    Signature{"\0\0\0\x0cjP  "sv, FileType::image, "jp2"},
    Signature{"AT&TFORM"sv, FileType::image, "djvu"},
    Signature{"OggS\0"sv, FileType::media, "ogg"},
    Signature{"fLaC\0"sv, FileType::media, "flac"},
    Signature{"MThd\0"sv, FileType::media, "mid"},
    Signature{"\x1a\x45\xdf\xa3"sv, FileType::media, "mkv"},
    Signature{"0&\xb2u\x8e\x66\xcf\x11"sv, FileType::media, "wmv"},
    Signature{"FLV\1"sv, FileType::media, "flv"},
    Signature{"\0\0\1\xba"sv, FileType::media, "mpg"},
    Signature{"\0\0\1\xb3"sv, FileType::media, "mpg"},
    Signature{"ID3\2"sv, FileType::media, "mp3"},
    Signature{"ID3\3"sv, FileType::media, "mp3"},
    Signature{"ID3\4"sv, FileType::media, "mp3"},
    Signature{"#!AMR\n"sv, FileType::media, "amr"},
    Signature{"\x7f"
              "ELF"sv,
              FileType::executable, "elf"},
    Signature{"\xfe\xed\xfa\xce"sv, FileType::executable, "macho"},
    Signature{"\xfe\xed\xfa\xcf"sv, FileType::executable, "macho"},
    Signature{"\xce\xfa\xed\xfe"sv, FileType::executable, "macho"},
    Signature{"\xcf\xfa\xed\xfe"sv, FileType::executable, "macho"},
    Signature{"\xca\xfe\xba\xbe"sv, FileType::executable, "class"},
    Signature{"\0asm\1"sv, FileType::executable, "wasm"},
    Signature{"dex\n03"sv, FileType::executable, "dex"},
    Signature{"\x78\x9f\x3e\x22"sv, FileType::tnef, "dat"},
    Signature{"7z\xbc\xaf\x27\x1c"sv, FileType::other_archive, "7z"},
    Signature{"Rar!\x1a\7"sv, FileType::other_archive, "rar"},
    Signature{"\xfd"
              "7zXZ\0"sv,
              FileType::other_archive, "xz"},
    Signature{"\x28\xb5\x2f\xfd"sv, FileType::other_archive, "zst"},
    Signature{"\x04\x22\x4d\x18"sv, FileType::other_archive, "lz4"},
    Signature{"\x1f\x9d"sv, FileType::other_archive, "Z"},
    Signature{"LZIP\1"sv, FileType::other_archive, "lz"},
    Signature{"MSCF\0\0\0\0"sv, FileType::other_archive, "cab"},
    Signature{"!<arch>\n"sv, FileType::other_archive, "ar"},
    Signature{"\xed\xab\xee\xdb"sv, FileType::other_archive, "rpm"},
    Signature{"\x1f\x8b\x08"sv, FileType::gzip, "gz"},
    Signature{"SQLite format 3\0"sv, FileType::other_binary, "sqlite"},
    Signature{"\0\1\0\0Standard Jet DB\0"sv, FileType::other_binary, "mdb"},
    Signature{"\0\1\0\0Standard ACE DB\0"sv, FileType::other_binary, "accdb"},
    Signature{"\0\1\0\0\0"sv, FileType::other_binary, "ttf"},
    Signature{"OTTO\0"sv, FileType::other_binary, "otf"},
    Signature{"ttcf\0"sv, FileType::other_binary, "ttc"},
    Signature{"wOFF"sv, FileType::other_binary, "woff"},
    Signature{"wOF2"sv, FileType::other_binary, "woff2"},
};

Recognition recognize_riff(std::string_view head) {
  if (head.size() < 12 || !head.starts_with("RIFF")) {
    return {};
  }
  auto const form = head.substr(8, 4);
  if (form == "WEBP") {
    return {FileType::image, "webp"};
  }
  if (form == "WAVE") {
    return {FileType::media, "wav"};
  }
  return form == "AVI " ? Recognition{FileType::media, "avi"} : Recognition{};
}

// ISO media files begin with the length of their first box, whose type and brand stand behind it.
Recognition recognize_iso_media(std::string_view head) {
  if (head.size() < 12 || head.substr(0, 2) != "\0\0"sv || head.substr(4, 4) != "ftyp") {
    return {};
  }
  auto const brand = head.substr(8, 4);
  if (brand == "heic" || brand == "heix" || brand == "mif1") {
    return {FileType::image, "heic"};
  }
  if (brand == "avif") {
    return {FileType::image, "avif"};
  }
  if (brand == "M4A ") {
    return {FileType::media, "m4a"};
  }
  return {FileType::media, brand == "qt  " ? "mov" : "mp4"};
}

Recognition recognize_emf(std::string_view head) {
  auto const is_emf =
      head.starts_with("\1\0\0\0"sv) && head.size() >= 44 && head.substr(40, 4) == " EMF";
  return is_emf ? Recognition{FileType::image, "emf"} : Recognition{};
}

// "BM" and "MZ" are also how a text may begin, so the header behind them has to make sense.
Recognition recognize_two_letters(std::string_view head) {
  if (head.starts_with("BM") && little32(head, 6) == 0 && little32(head, 10) >= 26 &&
      little32(head, 10) < 4096 && little32(head, 14) >= 12 && little32(head, 14) <= 124) {
    return {FileType::image, "bmp"};
  }
  if (head.starts_with("MZ") && head.size() >= 64) {
    auto const header = little32(head, 0x3c);
    auto const has_header = header <= head.size() && head.substr(header).starts_with("PE\0\0"sv);
    if (has_header || head.substr(0, 64).find('\0') != std::string_view::npos) {
      return {FileType::executable, "exe"};
    }
  }
  if (head.starts_with("BZh") && head.size() >= 10 && head[3] >= '1' && head[3] <= '9' &&
      head.substr(4, 6) == "1AY&SY"sv) {
    return {FileType::other_archive, "bz2"};
  }
  return {};
}

// The sync word alone is too weak, so bit rate and sample rate have to be possible ones.
Recognition recognize_mpeg_audio(std::string_view head) {
  if (head.size() < 4 || static_cast<unsigned char>(head[0]) != 0xff) {
    return {};
  }
  auto const second = static_cast<unsigned char>(head[1]);
  auto const third = static_cast<unsigned char>(head[2]);
  auto const is_layer3 = second == 0xfb || second == 0xfa || second == 0xf3 || second == 0xf2;
  if (!is_layer3 || (third >> 4U) == 0 || (third >> 4U) == 15 || ((third >> 2U) & 3U) == 3) {
    return {};
  }
  return {FileType::media, "mp3"};
}

// A tar header carries the sum of its own bytes, with the field of the sum taken as blanks. Some
// writers took the bytes as signed numbers.
bool is_tar_header(std::string_view head) {
  if (head.size() < 512 || head[0] == '\0') {
    return false;
  }
  std::int64_t sum = 0;
  std::int64_t signed_sum = 0;
  for (std::size_t i = 0; i < 512; ++i) {
    auto const byte = i >= 148 && i < 156 ? ' ' : head[i];
    sum += static_cast<unsigned char>(byte);
    signed_sum += static_cast<signed char>(byte);
  }
  std::int64_t stated = 0;
  std::size_t digits = 0;
  for (auto const character : head.substr(148, 8)) {
    if (character >= '0' && character <= '7') {
      stated = stated * 8 + (character - '0');
      ++digits;
    } else if (digits != 0) {
      break;
    } else if (character != ' ') {
      return false;
    }
  }
  return digits != 0 && (stated == sum || stated == signed_sum);
}

// The headers of the two common variants of CPIO are digits from the beginning to the end.
Recognition recognize_cpio(std::string_view head) {
  constexpr std::string_view octal = "01234567";
  constexpr std::string_view hexadecimal = "0123456789ABCDEFabcdef";
  bool const is_old = head.starts_with("070707");
  bool const is_new = head.starts_with("070701") || head.starts_with("070702");
  auto const header = head.substr(0, is_old ? 76 : 110);
  bool const is_cpio = (is_old && header.size() == 76 &&
                        header.find_first_not_of(octal) == std::string_view::npos) ||
                       (is_new && header.size() == 110 &&
                        header.find_first_not_of(hexadecimal) == std::string_view::npos);
  return is_cpio ? Recognition{FileType::other_archive, "cpio"} : Recognition{};
}

}  // namespace

Recognition recognize_signature(std::string_view head) {
  auto const* const found = std::find_if(
      signatures.begin(), signatures.end(),
      [head](Signature const& signature) { return head.starts_with(signature.bytes); });
  if (found != signatures.end()) {
    return {found->type, found->suffix};
  }
  for (auto const recognize_by : {recognize_riff, recognize_iso_media, recognize_emf,
                                  recognize_two_letters, recognize_mpeg_audio, recognize_cpio}) {
    if (auto const recognition = recognize_by(head); recognition.type != FileType::unknown) {
      return recognition;
    }
  }
  return is_tar_header(head) ? Recognition{FileType::tar, "tar"} : Recognition{};
}

}  // namespace tessarine
