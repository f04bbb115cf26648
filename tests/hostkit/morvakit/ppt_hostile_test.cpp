#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/ppt_builder.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/tessarine/compound_image.h"

namespace {

using namespace std::string_literals;
using namespace test::ppt;
using Orlec::ParseOutcome;

std::string words(std::string const& utf8) {
  return shape(text_box(text(utf8)));
}

test::Parsed parse_stream(std::string const& stream, std::string const& current_user) {
  return test::parse_bytes(
      test::make_ole({{"Current User", current_user}, {"PowerPoint Document", stream}}));
}

/// A small presentation with everything in it.
Builder full_show() {
  Builder builder;
  builder.document_parts = headers_footers("footer", 3);
  builder.add_master(10, words("Confidential"));
  builder.add_notes(7, words("notes"));
  builder.add_slide(shape(placeholder(13) + outline_reference(0)) +
                        table(cell(1, "a") + cell(1, "b")) +
                        shape(properties({text_property(0x381, "alt")})),
                    text("title") + text_in_bytes("rest"), comment("why?"), 10, 7);
  builder.add_object(atom(4113, "object"));
  builder.save();
  return builder;
}

}  // namespace

TEST(PptHostile, a_lost_current_user_is_replaced_by_the_last_list) {
  auto builder = full_show();
  for (auto const& user : {""s, "short"s}) {
    auto const parsed = parse_stream(builder.stream, user);
    EXPECT_EQ(parsed.main(), "title\na\tb\nrest\nobject");
    EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  }
}

TEST(PptHostile, a_current_user_who_leads_nowhere_is_damage) {
  auto builder = full_show();
  auto const parsed = parse_stream(builder.stream, std::string(20, '\x7f'));
  EXPECT_EQ(parsed.main(), "title\na\tb\nrest\nobject");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the newest list of the presentation's objects is missing");
}

TEST(PptHostile, a_stream_that_ends_too_early_is_damage) {
  auto builder = full_show();
  test::CompoundImage image;
  image.add_stream("Current User", builder.current_user() + std::string(5000, '\0'));
  image.add_stream("PowerPoint Document", builder.stream + std::string(5000, '\0'));
  image.next[image.next.size() - 4] = test::CompoundImage::chain_end;
  auto const parsed = test::parse_bytes(image.bytes());
  EXPECT_EQ(parsed.main(), "title\na\tb\nrest\nobject");
  EXPECT_EQ(parsed.reason, "the stream of the presentation is cut short");
}

TEST(PptHostile, without_lists_all_that_stands_there_is_read_as_damaged) {
  auto builder = full_show();
  auto const parsed = parse_stream(builder.stream.substr(0, builder.edit_place), {});
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the lists of the presentation's objects cannot be followed");
  EXPECT_EQ(parsed.main(), "title\nrest\na\tb\nobject");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_remark), "notes");
}

TEST(PptHostile, lists_in_a_circle_end) {
  Builder builder;
  builder.add_slide(words("text"));
  builder.save();
  builder.stream.replace(builder.edit_place + 16, 4, test::little(builder.edit_place, 4));
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.reason, "the lists of the presentation's objects are broken");
}

TEST(PptHostile, lists_that_lie_on_each_other_are_not_read_again_and_again) {
  Builder builder;
  builder.add_slide(words("text"));
  std::string list;
  for (std::uint32_t i = 0; i < 20000; ++i) {
    list += test::little((i + 100) | 1U << 20U, 4) + test::little(0, 4);
  }
  builder.stream = atom(6002, list);
  for (int i = 0; i < 20000; ++i) {
    auto const former = builder.edit_place;
    builder.edit_place = builder.stream.size();
    builder.stream += atom(4085, std::string(8, '\0') + test::little(former, 4) +
                                     test::little(0, 4) + std::string(16, '\0'));
  }
  builder.save();
  EXPECT_EQ(test::parse_bytes(builder.bytes()).main(), "text");
}

TEST(PptHostile, a_slide_that_is_listed_often_is_read_once) {
  Builder builder;
  auto const slide = builder.add_slide(words("text"));
  for (int i = 0; i < 1000; ++i) {
    builder.list_slide(slide);
  }
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.counts.i_page, 1);
}

TEST(PptHostile, objects_in_one_place_are_read_once) {
  Builder builder;
  builder.add_slide(words("text"));
  for (int i = 0; i < 100; ++i) {
    builder.list_slide(100 + static_cast<std::uint32_t>(i));
  }
  builder.save();
  std::string run = test::little(100U | 100U << 20U, 4);
  auto const slide = builder.stream.find(Builder::slide(words("text")));
  for (int i = 0; i < 100; ++i) {
    run += test::little(slide, 4);
  }
  auto const list = builder.stream.size();
  builder.stream += atom(6002, run);
  auto const former = builder.edit_place;
  builder.edit_place = builder.stream.size();
  builder.stream +=
      atom(4085, std::string(8, '\0') + test::little(former, 4) + test::little(list, 4) +
                     test::little(1, 4) + std::string(12, '\0'));
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(PptHostile, masters_in_a_circle_end) {
  Builder builder;
  builder.add_title_master(10, words("one"), 11);
  builder.add_title_master(11, words("two"), 10);
  builder.add_slide(words("text"), {}, {}, 10);
  EXPECT_EQ(test::parse_bytes(builder.bytes()).kind(Orlec::ParseTextType_hf), "one\ntwo");
}

TEST(PptHostile, of_a_missing_slide_the_outline_is_read) {
  Builder builder;
  builder.list_slide(999, text("title"));
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "title");
  EXPECT_EQ(parsed.reason, "a slide is missing");
}

TEST(PptHostile, records_nested_too_deep_are_over_the_bound) {
  std::string shapes = words("deep");
  for (int i = 0; i < 300; ++i) {
    shapes = group(shapes);
  }
  Builder builder;
  builder.add_slide(words("text") + shapes);
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(PptHostile, a_record_longer_than_what_it_is_in_is_damage) {
  auto cut = text_box(text("text"));
  cut.replace(24, 4, test::little(0x7fffffff, 4));
  Builder builder;
  builder.add_slide(shape(cut) + words("behind"));
  auto const parsed = test::parse_bytes(builder.bytes());
  EXPECT_EQ(parsed.main(), "text\nbehind");
  EXPECT_EQ(parsed.reason, "a record of the presentation is cut short");
}

TEST(PptHostile, lists_over_the_bound_on_memory_end_the_parse) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 5000;
  test::ScopedLimits const scoped(limits);
  Builder builder;
  for (int i = 0; i < 1000; ++i) {
    builder.add_slide(words("text"), text("outline"));
  }
  EXPECT_EQ(test::parse_bytes(builder.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(PptHostile, a_container_with_too_many_entries_is_over_the_bound) {
  test::CompoundImage image;
  image.link({"PowerPoint Document"});
  for (int i = 0; i < 20001; ++i) {
    image.link({"x"});
  }
  auto const parsed = test::parse_bytes(image.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "the OLE2 directory has over 20000 entries");
}

TEST(PptHostile, a_file_without_its_stream_is_damaged) {
  auto const parsed =
      test::parse_bytes(test::make_ole({{"PowerPoint Document/inner", "a storage"}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the stream of the presentation is missing");
}

TEST(PptHostile, without_the_directory_of_the_container_the_presentation_is_found_in_its_sectors) {
  auto builder = full_show();
  builder.stream.resize(5000, '\0');
  test::CompoundImage image;
  image.add_stream("Pictures", std::string(5000, 'p'));
  image.add_stream("PowerPoint Document", builder.stream);
  image.directory = 0x00ffffff;
  auto const parsed = test::parse_bytes(image.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the OLE2 directory is missing");
  EXPECT_EQ(parsed.main(), "title\na\tb\nrest\nobject");
}

TEST(PptHostile, every_truncation_of_the_stream_is_survived) {
  auto const builder = full_show();
  for (std::size_t length = 0; length < builder.stream.size(); ++length) {
    parse_stream(builder.stream.substr(0, length), builder.current_user());
  }
}

TEST(PptHostile, a_shape_in_a_shape_leaves_the_texts_of_both) {
  Builder builder;
  builder.add_slide(
      shape(text_box(text("outer")) + shape(text_box(text("inner"))) + text_box(text("rest"))));
  EXPECT_EQ(test::parse_bytes(builder.bytes()).main(), "outer\ninner\nrest");
}

TEST(PptHostile, lists_of_sheets_are_charged_with_the_maps_made_of_them) {
  Builder builder;
  for (unsigned i = 0; i < 1000; ++i) {
    builder.add_notes(i, {});
  }
  auto const bytes = builder.bytes();
  Orlec::ParseLimits limits;
  // Enough for what finds the notes, lists them and knows which of them were read.
  limits.i_list_bytes = 110000;
  test::ScopedLimits const scoped(limits);
  EXPECT_EQ(test::parse_bytes(bytes).outcome, ParseOutcome::limit_reached);
}

TEST(PptHostile, random_changes_are_survived) {
  std::mt19937 random(31);
  auto const builder = full_show();
  for (int round = 0; round < 2000; ++round) {
    auto stream = builder.stream;
    auto user = builder.current_user();
    for (auto changes = random() % 6 + 1; changes != 0; --changes) {
      auto& changed = random() % 20 == 0 ? user : stream;
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    parse_stream(stream, user);
  }
}
