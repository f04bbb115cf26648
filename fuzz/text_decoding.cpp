#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "host/native_path.h"
#include "host/utf8.h"
#include "morvabs/text_decoder.h"

#include "fuzz/require.h"

// Text of any encoding, known or detected: decoded in pieces it is what it is as a whole, and
// always well-formed.

namespace {

using fuzz::require;

constexpr char const* encodings[] = {
    "",       "UTF-8",      "GB18030",      "GBK",          "Big5",          "Big5-HKSCS",
    "EUC-TW", "Shift_JIS",  "EUC-JP",       "ISO-2022-JP",  "EUC-KR",        "windows-949",
    "KOI8-R", "ISO-8859-1", "windows-1251", "windows-1253", "UTF-16LE",      "UTF-16BE",
    "UTF-16", "UTF-32LE",   "UTF-32BE",     "UTF-32",       "UTF-7",         "HZ",
    "SCSU",   "BOCU-1",     "CESU-8",       "ISO-2022-CN",  "ISO-2022-KR",   "IMAP-mailbox-name",
    "IBM037", "LMBCS-1",    "x-iscii-de",   "macintosh",    "no such thing", "ISO-2022-JP-2"};

std::string decoded_whole(std::string const& encoding, std::string_view bytes) {
  std::string utf8;
  morvabs::TextDecoder decoder(encoding);
  decoder.decode(bytes, true, utf8);
  // What one text left behind must not show in the next.
  std::string again;
  decoder.decode(bytes, true, again);
  require(again == utf8, "a text decodes as it did before");
  return utf8;
}

std::string decoded_in_pieces(std::string const& encoding, std::string_view bytes,
                              std::vector<std::size_t> const& lengths) {
  std::string utf8;
  morvabs::TextDecoder decoder(encoding);
  for (std::size_t const length : lengths) {
    std::string_view const piece = bytes.substr(0, length);
    decoder.decode(piece, false, utf8);
    bytes.remove_prefix(piece.size());
  }
  decoder.decode(bytes, true, utf8);
  return utf8;
}

void check_detection(std::string_view bytes) {
  morvabs::DetectedEncoding const found = morvabs::detect_encoding(bytes);
  require(found.mark_length <= bytes.size(), "a mark lies within the text");
  require(found.name.empty() || morvabs::TextDecoder(found.name).is_known(),
          "what is detected can be decoded");
  std::string const utf8 = morvabs::decode_text(bytes);
  require(morvabs::is_utf8(utf8), "a text of unknown encoding becomes well-formed");
  require(morvabs::from_utf8(utf8) == morvabs::decode_wide_text(bytes),
          "the wide form is the same text");
}

void check_utf8(std::string_view bytes) {
  std::size_t const valid = morvabs::valid_utf8_prefix(bytes);
  require(valid <= bytes.size() && morvabs::is_utf8(bytes.substr(0, valid)),
          "the valid prefix is valid");
  require(morvabs::is_utf8(bytes) == (valid == bytes.size()), "valid is what is valid to its end");
  std::size_t const complete = morvabs::complete_utf8_prefix(bytes);
  require(complete <= bytes.size() && bytes.size() - complete < 4,
          "no more than a sequence is held back");
  std::wstring const wide = morvabs::from_utf8(bytes);
  require(wide == morvabs::from_utf8(bytes.substr(0, complete)) +
                      morvabs::from_utf8(bytes.substr(complete)),
          "a cut between sequences changes nothing");
  std::string const back = morvabs::to_utf8(wide);
  require(morvabs::is_utf8(back), "UTF-8 that is written is well-formed");
  require((back == bytes) == morvabs::is_utf8(bytes), "well-formed UTF-8 comes back");
  if (bytes.find('\0') == std::string_view::npos) {
    require(morvabs::to_path(morvabs::from_path(bytes)) == bytes, "every path comes back");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  std::string encoding = input.PickValueInArray(encodings);
  if (encoding.empty()) {
    encoding = input.ConsumeRandomLengthString(24);
  }
  std::vector<std::size_t> lengths(input.ConsumeIntegralInRange<std::size_t>(0, 6));
  for (std::size_t& length : lengths) {
    length = input.ConsumeIntegralInRange<std::size_t>(0, 40);
  }
  std::string const bytes = input.ConsumeRemainingBytesAsString();
  std::string const whole = decoded_whole(encoding, bytes);
  require(morvabs::is_utf8(whole), "what is decoded is well-formed");
  require(decoded_in_pieces(encoding, bytes, lengths) == whole, "pieces give what the whole gives");
  check_detection(bytes);
  check_utf8(bytes);
  return 0;
}
