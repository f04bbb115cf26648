#include "morvakit/archive/archive_member.h"

#include "host/utf8.h"
#include "morvabs/text_decoder.h"
#include "morvakit/embedded.h"

#include "tessarine/file_type.h"

namespace morvakit {

namespace {

/// Whether files of the type hold nothing to be read, which their first bytes tell for certain.
bool is_without_text(tessarine::FileType type) {
  using tessarine::FileType;
  return type == FileType::image || type == FileType::media || type == FileType::executable ||
         type == FileType::other_binary;
}

unsigned char byte_at(std::string_view text, std::size_t index) {
  return index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
}

/// Whether all that is not ASCII are pairs of the common Chinese characters, which no other
/// encoding's names look like. Detection by frequency is at a loss with a text as short as a name.
bool is_common_chinese(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto const lead = byte_at(text, i);
    if (lead < 0x80) {
      continue;
    }
    auto const trail = byte_at(text, ++i);
    bool const is_mark = lead >= 0xA1 && lead <= 0xA3;
    bool const is_character = lead >= 0xB0 && lead <= 0xF7;
    if (!(is_mark || is_character) || trail < 0xA1 || trail == 0xFF) {
      return false;
    }
  }
  return true;
}

std::string encoding_of(std::string_view sample) {
  if (is_common_chinese(sample)) {
    return "GB18030";
  }
  auto const detected = morvabs::detect_encoding(sample).name;
  // Latin letters of Windows are what detection says where it knows nothing; names were written on
  // DOS then.
  bool const is_told = !detected.empty() && !detected.starts_with("UTF-") &&
                       detected != "windows-1252" && detected != "ISO-8859-1";
  return is_told ? detected : "IBM437";
}

}  // namespace

ArchiveMember::ArchiveMember(std::string_view name, ReadContext& context)
    : context_(context), spool_(name, context) {}

bool ArchiveMember::append(std::string_view bytes) {
  constexpr std::int64_t enough_to_tell = 64 << 10;
  is_wanted_ = is_wanted_ && spool_.append(bytes);
  if (is_wanted_ && !is_looked_at_ && spool_.GetSize() >= enough_to_tell) {
    is_looked_at_ = true;
    is_wanted_ = !is_without_text(tessarine::recognize(spool_).type);
  }
  return is_wanted_;
}

bool ArchiveMember::finish() {
  if (!is_wanted_) {
    context_.count_embedded();
    return context_.keep_going();
  }
  return spool_.GetSize() == 0 ? context_.keep_going() : read_embedded(spool_, context_);
}

std::string decode_member_name(std::string_view stored, std::string_view sample) {
  if (morvabs::is_utf8(stored)) {
    return std::string(stored);
  }
  morvabs::TextDecoder decoder(encoding_of(sample));
  std::string name;
  decoder.decode(stored, true, name);
  return name;
}

}  // namespace morvakit
