#include <random>

#include <gtest/gtest.h>

#include "hostkit/morvakit/archive_writer.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseLimits;
using Orlec::ParseOutcome;
using test::little;

std::string make_7z(test::ArchiveFiles const& files, char const* options = "compression=lzma2") {
  return test::make_archive("7zip", ARCHIVE_FILTER_NONE, files, options);
}

std::string bytes_of(std::initializer_list<int> values) {
  std::string bytes;
  for (int const value : values) {
    bytes += static_cast<char>(value);
  }
  return bytes;
}

/// An archive with data and a directory as they are given.
std::string archive_of(std::string const& data, std::string const& directory) {
  return "7z\xBC\xAF\x27\x1C" + little(4, 2) + little(0, 4) + little(data.size(), 8) +
         little(directory.size(), 8) + little(0, 4) + data + directory;
}

std::string const one_stored_stream = bytes_of({0x06, 0, 1, 0x09, 3, 0});

/// One file of three bytes in a folder whose coders are given.
std::string directory_of(std::string const& folder) {
  return bytes_of({0x01, 0x04}) + one_stored_stream + bytes_of({0x07, 0x0B, 1, 0}) + folder +
         bytes_of({0x0C, 3, 0, 0, 0x05, 1, 0x11, 5, 0, 'a', 0, 0, 0, 0, 0});
}

}  // namespace

TEST(SevenZip, the_files_are_read_in_their_order) {
  auto const parsed = test::parse_bytes(make_7z({{"a.txt", "one"}, {"d/b.txt", "two"}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one\ntwo");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "a.txt\nd/b.txt");
  EXPECT_EQ(parsed.counts.i_embed, 2);
}

TEST(SevenZip, stored_files_and_both_forms_of_lzma_are_read) {
  for (auto const* const options :
       {"compression=store", "compression=lzma1", "compression=lzma2"}) {
    EXPECT_EQ(test::parse_bytes(make_7z({{"a.txt", "one"}}, options)).main(), "one") << options;
  }
}

TEST(SevenZip, files_without_content_have_no_place_among_the_others) {
  auto const parsed =
      test::parse_bytes(make_7z({{"a.txt", ""}, {"d/", ""}, {"b.txt", "two"}, {"c.txt", ""}}));
  EXPECT_EQ(parsed.main(), "two");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(SevenZip, names_beyond_ascii_are_read) {
  auto const bytes =
      archive_of("one", bytes_of({0x01, 0x04}) + one_stored_stream +
                            bytes_of({0x07, 0x0B, 1,    0, 1, 0x01, 0x00, 0x0C, 3, 0, 0,
                                      0x05, 1,    0x11, 5, 0, 0x08, 0x54, 0,    0, 0, 0}));
  EXPECT_EQ(test::parse_bytes(bytes).kind(Orlec::ParseTextType_other), "合");
}

TEST(SevenZip, an_archive_without_files_has_no_text) {
  EXPECT_EQ(test::parse_bytes(archive_of("", "")).outcome, ParseOutcome::no_text);
}

TEST(SevenZip, a_locked_archive_is_encrypted) {
  auto const folder = bytes_of({1, 0x24, 0x06, 0xF1, 0x07, 0x01, 2, 0, 0});
  EXPECT_EQ(test::parse_bytes(archive_of("one", directory_of(folder))).outcome,
            ParseOutcome::encrypted);
}

TEST(SevenZip, a_locked_directory_is_encrypted) {
  auto const directory =
      bytes_of({0x17}) + one_stored_stream +
      bytes_of({0x07, 0x0B, 1, 0, 1, 0x24, 0x06, 0xF1, 0x07, 0x01, 2, 0, 0, 0x0C, 3, 0, 0});
  EXPECT_EQ(test::parse_bytes(archive_of("one", directory)).outcome, ParseOutcome::encrypted);
}

TEST(SevenZip, a_file_that_is_packed_in_an_unknown_way_is_named) {
  auto const folder = bytes_of({1, 0x03, 0x03, 0x04, 0x01});
  auto const parsed = test::parse_bytes(archive_of("one", directory_of(folder)));
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"a\": packed in a way not known here");
}

TEST(SevenZip, a_huge_dictionary_is_not_made_room_for) {
  auto const folder = bytes_of({1, 0x23, 0x03, 0x01, 0x01, 5, 0x5D, 0, 0, 0, 0xF0});
  auto const parsed = test::parse_bytes(archive_of("one", directory_of(folder)));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a dictionary over 201326592 bytes");
}

TEST(SevenZip, coders_that_feed_each_other_in_a_circle_do_no_harm) {
  auto const folder = bytes_of({2, 0x01, 0x04, 0x01, 0x04, 0, 0});
  auto const directory = bytes_of({0x01, 0x04}) + one_stored_stream + bytes_of({0x07, 0x0B, 1, 0}) +
                         folder +
                         bytes_of({0x0C, 3, 3, 0, 0, 0x05, 1, 0x11, 5, 0, 'a', 0, 0, 0, 0, 0});
  EXPECT_FALSE(test::parse_bytes(archive_of("one", directory)).is_ok &&
               test::parse_bytes(archive_of("one", directory)).outcome == ParseOutcome::text);
}

TEST(SevenZip, a_number_of_files_over_the_bound_is_not_made_room_for) {
  auto const parsed =
      test::parse_bytes(archive_of("", bytes_of({0x01, 0x05, 0xF0, 0xFF, 0xFF, 0xFF, 0x0F})));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a container of over 20000 entries");
}

TEST(SevenZip, a_section_that_comes_twice_is_damage) {
  auto const folders = bytes_of({0x07, 0x0B, 1, 0, 1, 0x01, 0x00, 0x0C, 3, 0});
  auto const sizes = bytes_of({0x08, 0});
  auto const files = bytes_of({0x05, 1, 0x11, 5, 0, 'a', 0, 0, 0, 0, 0});
  auto const names_twice =
      bytes_of({0x05, 1, 0x11, 5, 0, 'a', 0, 0, 0, 0x11, 5, 0, 'a', 0, 0, 0, 0, 0});
  auto const outcome_of = [](std::string const& directory) {
    return test::parse_bytes(archive_of("one", bytes_of({0x01, 0x04}) + directory)).outcome;
  };
  auto const end = std::string(1, '\0');
  EXPECT_EQ(outcome_of(one_stored_stream + folders + sizes + end + files), ParseOutcome::text);
  EXPECT_EQ(outcome_of(one_stored_stream + one_stored_stream + folders + end + files),
            ParseOutcome::damaged);
  EXPECT_EQ(outcome_of(one_stored_stream + folders + folders + end + files), ParseOutcome::damaged);
  EXPECT_EQ(outcome_of(one_stored_stream + folders + sizes + sizes + end + files),
            ParseOutcome::damaged);
  EXPECT_EQ(outcome_of(one_stored_stream + folders + end + names_twice), ParseOutcome::damaged);
}

TEST(SevenZip, sizes_that_are_told_over_and_over_take_no_memory) {
  // Each repetition would give 20,000 more files a size.
  std::string repeated;
  for (int i = 0; i < 20000; ++i) {
    repeated += bytes_of({0x08, 0x0D, 0xC0, 0x20, 0x4E, 0});
  }
  auto const directory = bytes_of({0x01, 0x04}) + one_stored_stream +
                         bytes_of({0x07, 0x0B, 1, 0, 1, 0x01, 0x00, 0x0C, 3, 0}) + repeated;
  EXPECT_EQ(test::parse_bytes(archive_of("one", directory)).outcome, ParseOutcome::damaged);
}

TEST(SevenZip, a_directory_outside_of_the_file_is_damage) {
  auto bytes = archive_of("", "x");
  bytes.replace(12, 8, little(~std::uint64_t{0}, 8));
  EXPECT_EQ(test::parse_bytes(bytes).reason, "the 7z directory is missing");
}

TEST(SevenZip, a_directory_that_unpacks_to_a_packed_directory_for_ever_is_damage) {
  // A stored directory that lies over itself.
  auto const packed =
      bytes_of({0x17, 0x06, 0, 1, 0x09, 18, 0, 0x07, 0x0B, 1, 0, 1, 0x01, 0x00, 0x0C, 18, 0, 0});
  auto bytes = "7z\xBC\xAF\x27\x1C" + little(4, 2) + little(0, 4) + little(0, 8) +
               little(packed.size(), 8) + little(0, 4) + packed;
  EXPECT_EQ(test::parse_bytes(bytes).outcome, ParseOutcome::damaged);
}

TEST(SevenZip, what_is_unpacked_is_bounded) {
  ParseLimits limits;
  limits.i_expanded_bytes = 1000000;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes(make_7z({{"a.txt", std::string(2000000, 'a')}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(SevenZip, an_archive_cut_anywhere_does_no_harm) {
  auto const bytes = make_7z({{"a.txt", "one"}, {"b.txt", "two"}});
  for (std::size_t length = 6; length < bytes.size(); ++length) {
    EXPECT_NE(test::parse_bytes(bytes.substr(0, length)).outcome, ParseOutcome::text) << length;
  }
}

TEST(SevenZip, an_archive_with_bytes_changed_does_no_harm) {
  std::mt19937 random(7);
  for (auto const& bytes : {archive_of("one", directory_of(bytes_of({1, 0x01, 0x00}))),
                            make_7z({{"a.txt", "one"}, {"b.txt", std::string(3000, 'b')}})}) {
    for (int round = 0; round < 1000; ++round) {
      auto changed = bytes;
      for (int i = 0; i < 2; ++i) {
        changed[6 + random() % (changed.size() - 6)] = static_cast<char>(random());
      }
      EXPECT_NE(test::parse_bytes(changed).outcome, ParseOutcome::failed) << round;
    }
  }
}
