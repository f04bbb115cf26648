#include <string>

#include <gtest/gtest.h>
#include <zlib.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/ppt_builder.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using namespace std::string_literals;
using namespace test::ppt;
using Orlec::ParseOutcome;

std::string words(std::string const& utf8) {
  return shape(text_box(text(utf8)));
}

test::Parsed parse(Builder& builder) {
  return test::parse_bytes(builder.bytes(), "show.ppt");
}

std::string packed(std::string const& bytes) {
  auto size = compressBound(bytes.size());
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef*>(out.data()), &size,
           reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
  out.resize(size);
  return atom(4113, test::little(bytes.size(), 4) + out, 1);
}

}  // namespace

TEST(Ppt, shapes_are_lines) {
  Builder builder;
  builder.add_slide(words("one") + words("two"));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "one\ntwo");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Ppt, slides_come_in_the_order_of_their_list) {
  Builder builder;
  auto const late = builder.add(Builder::slide(words("second")));
  builder.add_slide(words("first"));
  builder.list_slide(late);
  EXPECT_EQ(parse(builder).main(), "first\nsecond");
}

TEST(Ppt, text_in_one_byte_a_character_is_the_low_half_of_two) {
  Builder builder;
  builder.add_slide(shape(text_box(text_in_bytes("caf\xe9"))));
  EXPECT_EQ(parse(builder).main(), "café");
}

TEST(Ppt, text_in_two_bytes_a_character_is_read_in_all_scripts) {
  Builder builder;
  builder.add_slide(words("机密 Ж 😀"));
  EXPECT_EQ(parse(builder).main(), "机密 Ж 😀");
}

TEST(Ppt, half_a_pair_is_replaced) {
  Builder builder;
  builder.add_slide(shape(text_box(atom(4000, "\x00\xd8z\x00\x01\xdc"s))));
  EXPECT_EQ(parse(builder).main(), "\xef\xbf\xbdz\xef\xbf\xbd");
}

TEST(Ppt, ends_of_paragraphs_and_of_lines_are_line_ends) {
  Builder builder;
  builder.add_slide(words("one\rtwo\vthree\r"));
  EXPECT_EQ(parse(builder).main(), "one\ntwo\nthree");
}

TEST(Ppt, a_long_text_is_whole) {
  std::string expected;
  for (int i = 0; i < 30000; ++i) {
    expected += "wörd" + std::to_string(i) + ' ';
  }
  Builder builder;
  builder.add_slide(words(expected + "😀"));
  EXPECT_EQ(parse(builder).main(), expected + "😀");
}

TEST(Ppt, a_field_stands_for_no_character) {
  Builder builder;
  builder.add_slide(shape(text_box(text("page * of") + atom(4056, test::little(5, 4)))));
  EXPECT_EQ(parse(builder).main(), "page  of");
}

TEST(Ppt, a_placeholder_shows_its_text_of_the_outline) {
  Builder builder;
  builder.add_slide(
      words("before") + shape(placeholder(13) + outline_reference(1)) + words("after"),
      text("other") + text("title"));
  EXPECT_EQ(parse(builder).main(), "before\ntitle\nafter\nother");
}

TEST(Ppt, a_text_of_the_outline_that_two_shapes_refer_to_comes_once) {
  Builder builder;
  builder.add_slide(shape(outline_reference(0)) + shape(outline_reference(0)), text("title"));
  EXPECT_EQ(parse(builder).main(), "title");
}

TEST(Ppt, a_text_that_stands_in_the_outline_and_in_a_shape_comes_once) {
  Builder builder;
  builder.add_slide(words("title"), text_in_bytes("title"));
  EXPECT_EQ(parse(builder).main(), "title");
}

TEST(Ppt, a_reference_beyond_the_outline_is_passed_by) {
  Builder builder;
  builder.add_slide(shape(outline_reference(7)) + words("text"), text("title"));
  EXPECT_EQ(parse(builder).main(), "text\ntitle");
}

TEST(Ppt, cells_are_separated_by_tabs_and_rows_by_line_ends) {
  Builder builder;
  builder.add_slide(table(cell(1, "a") + cell(1, "b") + cell(2, "c") + cell(2, "d")) +
                    words("after"));
  EXPECT_EQ(parse(builder).main(), "a\tb\nc\td\nafter");
}

TEST(Ppt, shapes_in_groups_are_read) {
  Builder builder;
  builder.add_slide(group(shape({}, 1) + group(words("deep")) + words("less")));
  EXPECT_EQ(parse(builder).main(), "deep\nless");
}

TEST(Ppt, deleted_shapes_are_left_out) {
  Builder builder;
  builder.add_slide(shape(text_box(text("gone")), 8) + words("there"));
  EXPECT_EQ(parse(builder).main(), "there");
}

TEST(Ppt, word_art_is_text_and_a_description_is_other_text) {
  Builder builder;
  builder.add_slide(shape(
      properties({{0x0004, 7, ""}, text_property(0xc0, "art"), text_property(0x381, "alt")})));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "art");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "alt");
}

TEST(Ppt, a_list_among_the_properties_may_leave_its_head_out_of_its_size) {
  auto const corners = test::little(2, 2) + test::little(2, 2) + test::little(0xfff0, 2) +
                       test::little(1, 4) + test::little(2, 4);
  Builder builder;
  builder.add_slide(shape(properties({{0x145, 8, corners}, text_property(0x381, "alt")})) +
                    shape(properties({{0x145, 14, corners}, text_property(0x381, "more")})));
  EXPECT_EQ(parse(builder).kind(Orlec::ParseTextType_other), "alt\nmore");
}

TEST(Ppt, dates_footers_and_numbers_are_headers_and_footers) {
  Builder builder;
  builder.document_parts = headers_footers("all", 3);
  builder.add_slide(words("text") + shape(placeholder(9) + text_box(text("shape"))) +
                        shape(container(0xf011, atom(1056, "\x09"s)) + text_box(text("newer"))),
                    {}, headers_footers("this"));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "all\nshape\nnewer\nthis");
}

TEST(Ppt, notes_are_remarks) {
  Builder builder;
  builder.add_notes(5, words("of nobody"));
  builder.add_notes(7, words("say this") + shape(placeholder(8) + text_box(text("12"))));
  builder.add_slide(words("text"), {}, {}, 0, 7);
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_remark), "say this\nof nobody");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "12");
}

TEST(Ppt, comments_are_kept_apart) {
  Builder builder;
  builder.add_slide(words("text"), {}, comment("why?"));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "why?");
}

TEST(Ppt, a_master_shows_what_is_no_placeholder_once) {
  Builder builder;
  builder.add_master(10, words("Confidential") + shape(placeholder(1) + text_box(text("Click"))));
  builder.add_master(11, words("unused"));
  builder.add_title_master(12, words("On titles"), 10);
  builder.add_slide(words("one"), {}, {}, 12);
  builder.add_slide(words("two"), {}, {}, 10);
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "one\ntwo");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "On titles\nConfidential");
}

TEST(Ppt, targets_of_links_are_other_text) {
  Builder builder;
  builder.document_parts =
      container(1033, container(4055, atom(4051, test::little(1, 4)) + string_record("shown", 0) +
                                          string_record("https://example.org/", 1)));
  builder.add_slide(words("text"));
  EXPECT_EQ(parse(builder).kind(Orlec::ParseTextType_other), "https://example.org/");
}

TEST(Ppt, former_states_of_a_slide_are_no_text) {
  Builder builder;
  auto const slide = builder.add_slide(words("former"));
  builder.save();
  builder.replace(slide, Builder::slide(words("present")));
  builder.save();
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "present");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Ppt, slides_and_pictures_are_counted) {
  Builder builder;
  auto const picture = std::string(24, '\0') + test::little(1, 4) + std::string(8, '\0');
  auto const unused = std::string(36, '\0');
  builder.document_parts =
      container(1035, container(0xf000, container(0xf001, record(2, 0xf007, 5, picture) +
                                                              record(2, 0xf007, 5, unused))));
  builder.add_slide(words("one"));
  builder.add_slide(words("two"));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.counts.i_page, 2);
  EXPECT_EQ(parsed.counts.i_img, 1);
}

TEST(Ppt, an_embedded_object_follows_packed_or_not) {
  Builder inner;
  inner.add_slide(words("within"));
  Builder builder;
  builder.add_slide(words("around"));
  builder.add_object(packed(inner.bytes()));
  builder.add_object(atom(4113, inner.bytes()));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "around\nwithin\nwithin");
  EXPECT_EQ(parsed.counts.i_embed, 2);
  EXPECT_EQ(parsed.counts.i_page, 1);
}

TEST(Ppt, the_end_of_a_packed_object_may_be_missing) {
  Builder inner;
  inner.add_slide(words("within"));
  auto object = packed(inner.bytes());
  object.resize(object.size() - 4);
  object.replace(4, 4, test::little(object.size() - 8, 4));
  Builder builder;
  builder.add_object(object);
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "within");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Ppt, with_an_object_that_cannot_be_unpacked_the_reading_is_incomplete) {
  Builder builder;
  builder.add_slide(words("text"));
  builder.add_object(atom(4113, test::little(9999, 4) + "no deflate", 1));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "an embedded object cannot be unpacked");
}

TEST(Ppt, without_an_object_that_is_listed_the_reading_is_incomplete) {
  Builder builder;
  builder.add_slide(words("text"));
  builder.add_object(atom(9999, "something else"));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "an embedded object is missing");
}

TEST(Ppt, without_notes_that_are_listed_the_reading_is_incomplete) {
  Builder builder;
  auto const slide = builder.add_slide(words("text"));
  builder.add_notes(7, words("notes"));
  builder.save();
  builder.replace(slide + 1, atom(9999, "something else"));
  builder.save();
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "the notes on a slide are missing");
}

TEST(Ppt, an_object_that_unpacks_to_too_much_is_over_the_bound) {
  Orlec::ParseLimits limits;
  limits.i_expanded_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  Builder builder;
  builder.add_slide(words("text"));
  builder.add_object(packed(std::string(1000000, 'x')));
  auto const parsed = parse(builder);
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(Ppt, a_presentation_that_needs_a_password_is_encrypted) {
  Builder builder;
  builder.add_slide(words("text"));
  builder.encryption = builder.add(container(12052, "key"));
  EXPECT_EQ(parse(builder).outcome, ParseOutcome::encrypted);
}

TEST(Ppt, a_presentation_for_two_versions_is_read_in_the_newer_form) {
  Builder builder;
  builder.add_slide(words("newer"));
  builder.save();
  auto const parsed =
      test::parse_bytes(test::make_ole({{"PP40", "older"},
                                        {"PP97_DUALSTORAGE/Current User", builder.current_user()},
                                        {"PP97_DUALSTORAGE/PowerPoint Document", builder.stream}}));
  EXPECT_EQ(parsed.main(), "newer");
}

TEST(Ppt, a_presentation_of_an_older_program_is_not_supported) {
  auto const parsed = test::parse_bytes(test::make_ole({{"PP40", std::string(600, 'x')}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::not_supported);
  EXPECT_EQ(parsed.reason, "presentations of PowerPoint 95 and before are not read");
}

TEST(Ppt, a_presentation_without_text_has_none) {
  Builder builder;
  builder.add_slide({});
  EXPECT_EQ(parse(builder).outcome, ParseOutcome::no_text);
}
