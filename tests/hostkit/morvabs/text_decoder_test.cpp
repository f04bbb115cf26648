#include "morvabs/text_decoder.h"

#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/utf8.h"

namespace {

std::string decode(std::string_view encoding, std::string_view bytes) {
  std::string utf8;
  morvabs::TextDecoder(encoding).decode(bytes, true, utf8);
  return utf8;
}

std::string decode_byte_by_byte(std::string_view encoding, std::string_view bytes) {
  morvabs::TextDecoder decoder(encoding);
  std::string utf8;
  for (char const byte : bytes) {
    decoder.decode({&byte, 1}, false, utf8);
  }
  decoder.decode({}, true, utf8);
  return utf8;
}

/// The text in UTF-16, low byte first.
std::string utf16le(std::u16string_view text) {
  std::string bytes;
  for (char16_t const unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFFU));
    bytes.push_back(static_cast<char>(unit >> 8U));
  }
  return bytes;
}

std::string swapped(std::string bytes) {
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    std::swap(bytes[i], bytes[i + 1]);
  }
  return bytes;
}

TEST(TextDecoder, knows_names_in_any_spelling) {
  for (char const* name : {"utf-8", "UTF8", "GB2312", "gb_2312-80", "GBK", "cp936", "gb18030",
                           "big5", "Shift_JIS", "euc-jp", "ks_c_5601-1987", "KOI8-R", "latin1",
                           "windows-1251", "UTF-16LE", "ISO-2022-JP", "IBM866"}) {
    EXPECT_TRUE(morvabs::TextDecoder(name).is_known()) << name;
  }
}

TEST(TextDecoder, an_unknown_name_is_read_as_windows_1252) {
  for (std::string_view const name :
       {std::string_view(), std::string_view("no such set"), std::string_view("utf-16\0le", 9)}) {
    EXPECT_FALSE(morvabs::TextDecoder(name).is_known());
    EXPECT_EQ(decode(name, "\x80\xE9"), "€é");
  }
}

TEST(TextDecoder, gb2312_and_gbk_are_read_as_gb18030) {
  EXPECT_EQ(decode("GB2312", "\xE9\x46\x81\x30\x81\x30"), "镕\xC2\x80");
  EXPECT_EQ(decode("GBK", "\x95\x32\x82\x36"), "𠀀");
}

TEST(TextDecoder, latin_1_is_read_as_windows_1252) {
  EXPECT_EQ(decode("ISO-8859-1", "\x93quoted\x94"), "“quoted”");
}

TEST(TextDecoder, utf8_passes_through) {
  EXPECT_EQ(decode("UTF-8", "中文 😀"), "中文 😀");
}

TEST(TextDecoder, a_malformed_sequence_becomes_the_replacement_character) {
  EXPECT_EQ(decode("UTF-8", "a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(decode("GB18030", "a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(decode("Shift_JIS", "a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(decode("EUC-JP", "a\x8Fz"), "a\uFFFDz");
}

TEST(TextDecoder, a_sequence_cut_at_the_end_becomes_the_replacement_character) {
  EXPECT_EQ(decode("UTF-8", "a\xE4\xB8"), "a\uFFFD\uFFFD");
  EXPECT_EQ(decode("GB18030", "a\xB0"), "a\uFFFD");
  EXPECT_EQ(decode("UTF-16LE", std::string_view("a\0b", 3)), "a\uFFFD");
  EXPECT_EQ(decode("UTF-16LE", utf16le(u"a") + "\x3D\xD8"), "a\uFFFD");
}

TEST(TextDecoder, a_lone_surrogate_becomes_the_replacement_character) {
  EXPECT_EQ(decode("UTF-16LE", std::string("\x3D\xD8", 2) + utf16le(u"ab")), "\uFFFDab");
  EXPECT_EQ(decode("UTF-16LE", std::string("\x00\xDE", 2) + utf16le(u"a")), "\uFFFDa");
}

TEST(TextDecoder, pieces_give_the_same_as_the_whole) {
  std::string const utf16 = utf16le(u"a中😀\xFFFD");
  EXPECT_EQ(decode_byte_by_byte("UTF-16LE", utf16), decode("UTF-16LE", utf16));
  EXPECT_EQ(decode_byte_by_byte("UTF-8", "a中😀\xE4z"), decode("UTF-8", "a中😀\xE4z"));
  EXPECT_EQ(decode_byte_by_byte("GB18030", "\xB0\xA1\x95\x32\x82\x36\xFF"),
            decode("GB18030", "\xB0\xA1\x95\x32\x82\x36\xFF"));
}

TEST(TextDecoder, a_pair_on_the_edge_of_a_buffer_stays_whole) {
  for (std::size_t length = 4090; length < 4100; ++length) {
    std::u16string const text = std::u16string(length, u'a') + u"😀😀";
    EXPECT_EQ(decode("UTF-16LE", utf16le(text)), std::string(length, 'a') + "😀😀");
  }
}

TEST(TextDecoder, a_text_after_the_last_begins_anew) {
  morvabs::TextDecoder decoder("GB18030");
  std::string utf8;
  decoder.decode("\xB0", true, utf8);
  decoder.decode("\xB0\xA1", true, utf8);
  EXPECT_EQ(utf8, "\uFFFD啊");
}

TEST(TextDecoder, can_be_moved) {
  morvabs::TextDecoder first("GB18030");
  std::string utf8;
  first.decode("\xB0", false, utf8);
  morvabs::TextDecoder second(std::move(first));
  second.decode("\xA1", true, utf8);
  EXPECT_EQ(utf8, "啊");
}

struct MarkedText {
  std::string_view mark;
  char const* encoding;
};

void PrintTo(MarkedText const& text, std::ostream* out) {
  *out << text.encoding;
}

class ByteOrderMark : public testing::TestWithParam<MarkedText> {};

TEST_P(ByteOrderMark, decides) {
  auto const found = morvabs::detect_encoding(std::string(GetParam().mark) + "abcd");
  EXPECT_EQ(found.name, GetParam().encoding);
  EXPECT_EQ(found.mark_length, GetParam().mark.size());
}

INSTANTIATE_TEST_SUITE_P(Marks, ByteOrderMark,
                         testing::Values(MarkedText{"\xEF\xBB\xBF", "UTF-8"},
                                         MarkedText{"\xFF\xFE", "UTF-16LE"},
                                         MarkedText{"\xFE\xFF", "UTF-16BE"},
                                         MarkedText{{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
                                         MarkedText{{"\0\0\xFE\xFF", 4}, "UTF-32BE"},
                                         MarkedText{"\x84\x31\x95\x33", "GB18030"}));

TEST(DetectEncoding, valid_utf8_is_utf8) {
  EXPECT_EQ(morvabs::detect_encoding("plain").name, "UTF-8");
  EXPECT_EQ(morvabs::detect_encoding("中").name, "UTF-8");
  EXPECT_EQ(morvabs::detect_encoding("").name, "UTF-8");
}

TEST(DetectEncoding, a_sequence_cut_at_the_end_of_the_sample_is_no_fault) {
  EXPECT_EQ(morvabs::detect_encoding("中文\xE4\xB8").name, "UTF-8");
}

TEST(DetectEncoding, a_damaged_byte_in_utf8_is_borne) {
  EXPECT_EQ(morvabs::detect_encoding("这是一段很长的中文文本\xFF，其中有一个坏字节").name, "UTF-8");
}

TEST(DetectEncoding, utf16_without_mark_shows_by_its_zero_bytes) {
  std::string const text = utf16le(u"第一章 Chapter 1\r\n数据安全。");
  EXPECT_EQ(morvabs::detect_encoding(text).name, "UTF-16LE");
  EXPECT_EQ(morvabs::detect_encoding(swapped(text)).name, "UTF-16BE");
}

TEST(DetectEncoding, ascii_in_utf16_is_not_taken_for_utf8) {
  EXPECT_EQ(morvabs::detect_encoding(utf16le(u"plain text")).name, "UTF-16LE");
}

TEST(DetectEncoding, small_numbers_are_no_wide_text) {
  for (std::string const& bytes :
       {std::string("\0\1\2\xFF", 4), std::string("\0\1\2\3", 4),
        std::string("\0\1\2\3\4\5\6\7", 8), std::string("\1\0\2\0\3\0", 6),
        std::string("\0\0\0\1\0\0\0\2", 8)}) {
    EXPECT_EQ(morvabs::detect_encoding(bytes).name, "");
  }
}

TEST(DetectEncoding, chinese_text_in_wide_units_is_recognised) {
  for (std::u16string const text :
       {u"第一章　总则\n第一条　为了规范合同的签订和履行，制定本办法。\n",
        u"软件开发合同\n甲方委托乙方开发文档管理系统\n", u"最近需要开会讨论开发工作",
        u"乙方保证交付的软件不侵犯任何第三方的知识产权"}) {
    EXPECT_EQ(morvabs::detect_encoding(utf16le(text)).name, "UTF-16LE");
    EXPECT_EQ(morvabs::detect_encoding(swapped(utf16le(text))).name, "UTF-16BE");
    EXPECT_EQ(morvabs::decode_text(utf16le(text)),
              morvabs::decode_text("\xFF\xFE" + utf16le(text)));
  }
}

TEST(DetectEncoding, text_in_utf16_whose_bytes_are_all_ascii_is_recognised) {
  for (std::u16string const text :
       {u"Поставщик обязуется передать оборудование", u"Ο προμηθευτής παραδίδει τον εξοπλισμό"}) {
    EXPECT_EQ(morvabs::detect_encoding(utf16le(text)).name, "UTF-16LE");
    EXPECT_EQ(morvabs::detect_encoding(swapped(utf16le(text))).name, "UTF-16BE");
  }
}

TEST(DetectEncoding, short_russian_words_are_no_ideographs) {
  EXPECT_EQ(morvabs::detect_encoding("\xCB\xD5\xD0\xC1\xD4\xC5\xCC\xD8").name, "KOI8-R");
  EXPECT_EQ(morvabs::detect_encoding("\xF0\xCF\xC4\xDF\xA3\xCD \xC3\xC5\xCE").name, "KOI8-R");
}

TEST(DetectEncoding, few_ideographs_stay_ideographs) {
  for (char const* const text : {"\xBA\xCF\xCD\xAC", "\xB2\xC6\xCE\xF1\xB1\xA8\xB1\xED",
                                 "\xBC\xD7\xB7\xBD\xCE\xAF\xCD\xD0"}) {
    EXPECT_EQ(morvabs::detect_encoding(text).name, "GB18030");
  }
}

TEST(DetectEncoding, a_null_in_valid_utf8_does_not_make_it_wide) {
  EXPECT_EQ(morvabs::decode_text(std::string("a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(morvabs::decode_text(std::string("abc\0def ghi\n", 12)),
            std::string("abc\0def ghi\n", 12));
  std::string const text = std::string(20, 'x') + '\0' + std::string(20, 'y');
  EXPECT_EQ(morvabs::detect_encoding(text).name, "UTF-8");
}

TEST(DetectEncoding, bytes_of_a_binary_file_are_no_text) {
  std::string binary;
  for (int i = 0; i < 2000; ++i) {
    binary.push_back(static_cast<char>(i * 37 % 256));
  }
  EXPECT_EQ(morvabs::detect_encoding(binary).name, "");
  EXPECT_EQ(morvabs::detect_encoding(std::string_view("\x7F"
                                                      "ELF\x02\x01\x01\0\0\0\0\0",
                                                      12))
                .name,
            "");
}

TEST(DetectEncoding, control_characters_without_null_bytes_are_no_text_either) {
  EXPECT_EQ(morvabs::detect_encoding("\x01\x02\x03\x04\x05 abc").name, "");
}

TEST(DetectEncoding, what_is_found_is_known_to_the_decoder) {
  for (char const* bytes : {"\xCE\xC4\xB5\xB5", "caf\xE9", "\x82\xB1\x82\xEA\x82\xCD", "\xFF"}) {
    EXPECT_TRUE(morvabs::TextDecoder(morvabs::detect_encoding(bytes).name).is_known());
  }
}

struct LegacyText {
  char const* name;
  std::string_view bytes;
  char const* utf8;
};

void PrintTo(LegacyText const& text, std::ostream* out) {
  *out << text.name;
}

class LegacyEncoding : public testing::TestWithParam<LegacyText> {};

TEST_P(LegacyEncoding, is_detected_and_decoded) {
  EXPECT_EQ(morvabs::decode_text(GetParam().bytes), GetParam().utf8);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, LegacyEncoding,
    testing::Values(
        LegacyText{"GB18030",
                   "\xCA\xFD\xBE\xDD\xB0\xB2\xC8\xAB\xCA\xC7\xC6\xF3\xD2\xB5\xB9\xDC\xC0\xED\xB5"
                   "\xC4\xD6\xD8\xD2\xAA\xB9\xA4\xD7\xF7\xA3\xAC\xCE\xD2\xC3\xC7\xD3\xA6\xB8\xC3"
                   "\xC1\xCB\xBD\xE2\xCB\xFC\xA1\xA3",
                   "数据安全是企业管理的重要工作，我们应该了解它。"},
        LegacyText{"Big5",
                   "\xBC\xC6\xBE\xDA\xA6w\xA5\xFE\xACO\xA5\xF8\xB7~"
                   "\xBA\xDE\xB2z\xAA\xBA\xAD\xAB\xADn\xA4u\xA7@\xA1"
                   "A\xA7\xDA\xAD\xCC\xC0\xB3\xB8\xD3\xA4"
                   "F\xB8\xD1\xA5\xA6\xA1"
                   "C",
                   "數據安全是企業管理的重要工作，我們應該了解它。"},
        LegacyText{"ShiftJis",
                   "\x82\xB1\x82\xEA\x82\xCD\x83"
                   "e\x83X\x83g\x95\xB6\x8F\x91\x82\xC5\x82\xB7\x81"
                   "B\x93\xFA\x96{\x8C\xEA\x82\xCC\x95\xB6\x8E\x9A\x83R\x81["
                   "\x83h\x82\xF0\x92\xB2\x82\xD7\x82\xDC\x82\xB7\x81"
                   "B",
                   "これはテスト文書です。日本語の文字コードを調べます。"},
        LegacyText{"EucJp",
                   "\xA4\xB3\xA4\xEC\xA4\xCF\xA5\xC6\xA5\xB9\xA5\xC8\xCA\xB8\xBD\xF1\xA4\xC7\xA4"
                   "\xB9\xA1\xA3\xC6\xFC\xCB\xDC\xB8\xEC\xA4\xCE\xCA\xB8\xBB\xFA\xA5\xB3\xA1\xBC"
                   "\xA5\xC9\xA4\xF2\xC4\xB4\xA4\xD9\xA4\xDE\xA4\xB9\xA1\xA3",
                   "これはテスト文書です。日本語の文字コードを調べます。"},
        LegacyText{"EucKr",
                   "\xC0\xCC\xB0\xCD\xC0\xBA \xC7\xD1\xB1\xB9\xBE\xEE\xB7\xCE \xB5\xC8 "
                   "\xB9\xAE\xBC\xAD\xC0\xCC\xB0\xED \xC0\xCE\xC4\xDA\xB5\xF9\xC0\xBB "
                   "\xC8\xAE\xC0\xCE\xC7\xCF\xB4\xC2 \xBD\xC3\xC7\xE8\xC0\xD4\xB4\xCF\xB4\xD9.",
                   "이것은 한국어로 된 문서이고 인코딩을 확인하는 시험입니다."},
        LegacyText{"Windows1251",
                   "\xDD\xF2\xEE \xEE\xE1\xFB\xF7\xED\xFB\xE9 \xF0\xF3\xF1\xF1\xEA\xE8\xE9 "
                   "\xF2\xE5\xEA\xF1\xF2, \xE2 \xEA\xEE\xF2\xEE\xF0\xEE\xEC \xE5\xF1\xF2\xFC "
                   "\xF1\xEB\xEE\xE2\xE0 \xF0\xE0\xE7\xED\xEE\xE9 \xE4\xEB\xE8\xED\xFB.",
                   "Это обычный русский текст, в котором есть слова разной длины."},
        LegacyText{"Koi8R",
                   "\xFC\xD4\xCF \xCF\xC2\xD9\xDE\xCE\xD9\xCA \xD2\xD5\xD3\xD3\xCB\xC9\xCA "
                   "\xD4\xC5\xCB\xD3\xD4, \xD7 \xCB\xCF\xD4\xCF\xD2\xCF\xCD \xC5\xD3\xD4\xD8 "
                   "\xD3\xCC\xCF\xD7\xC1 \xD2\xC1\xDA\xCE\xCF\xCA \xC4\xCC\xC9\xCE\xD9.",
                   "Это обычный русский текст, в котором есть слова разной длины."},
        LegacyText{"Windows1252",
                   "Les \xE9l\xE8ves fran\xE7"
                   "ais \xE9taient tr\xE8s fatigu\xE9s \xE0 c\xF4t\xE9 de la for\xEAt.",
                   "Les élèves français étaient très fatigués à côté de la forêt."},
        LegacyText{"Greek",
                   "\xCA\xE1\xEB\xE7\xEC\xDD\xF1\xE1 \xEA\xFC\xF3\xEC\xE5, \xE1\xF5\xF4\xFC "
                   "\xE5\xDF\xED\xE1\xE9 \xDD\xED\xE1 \xE5\xEB\xEB\xE7\xED\xE9\xEA\xFC "
                   "\xEA\xE5\xDF\xEC\xE5\xED\xEF \xEC\xE5 \xEB\xDD\xEE\xE5\xE9\xF2.",
                   "Καλημέρα κόσμε, αυτό είναι ένα ελληνικό κείμενο με λέξεις."},
        LegacyText{"ShortGb18030", "\xC5\xE4\xD6\xC3\xCB\xB5\xC3\xF7", "配置说明"},
        LegacyText{"ShortLatin", "caf\xE9", "café"},
        LegacyText{"FullWidthDigits", "\xA3\xB1\xA3\xB9\xA3\xB9\xA3\xB3", "１９９３"}));

TEST(DecodeText, drops_the_mark) {
  EXPECT_EQ(morvabs::decode_text("\xEF\xBB\xBFtext"), "text");
}

TEST(DecodeText, the_empty_text_is_empty) {
  EXPECT_EQ(morvabs::decode_text(""), "");
}

TEST(DecodeText, utf8_with_control_characters_stays) {
  EXPECT_EQ(morvabs::decode_text(std::string_view("\x01中\0\x02", 6)),
            std::string_view("\x01中\0\x02", 6));
}

TEST(DecodeText, a_text_whose_foreign_part_comes_late_is_detected) {
  std::string const ascii(std::size_t{2} << 20, '.');
  EXPECT_EQ(morvabs::decode_text(ascii + "\n\xCE\xC4\xB5\xB5\xD6\xD0\xB5\xC4\xD6\xC7\xC4\xDC"),
            ascii + "\n文档中的智能");
}

TEST(DecodeText, wide_and_narrow_agree) {
  for (std::string_view const bytes : {std::string_view("中"), std::string_view("\xCE\xC4\xB5\xB5"),
                                       std::string_view("\xFF\xFE-N", 4)}) {
    EXPECT_EQ(morvabs::to_utf8(morvabs::decode_wide_text(bytes)), morvabs::decode_text(bytes));
  }
}

}  // namespace
