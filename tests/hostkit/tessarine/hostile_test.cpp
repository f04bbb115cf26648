#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hostkit/tessarine/samples.h"

namespace {

using namespace std::string_literals;

std::vector<std::string> all_samples() {
  return {
      test::office_package("word/document.xml", test::word_type).bytes(),
      test::open_document("application/vnd.oasis.opendocument.text").bytes(),
      test::make_ole({{"WordDocument", test::word_stream(0x100)}}),
      test::make_ole({{"Workbook", test::workbook_stream(true)}, {"Other", "text"}}),
      test::make_ole({{"PowerPoint Document", std::string(5000, 'x')},
                      {"Current User", test::current_user(true)}}),
      "%PDF-1.4\n1 0 obj\n<<>>\nendobj\nstartxref\n0\n%%EOF\n",
      "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY b \"c\">]><a x='y'>&b;</a>",
      "<!-- x --><!DOCTYPE html><html><head><meta charset=gbk></head></html>",
      "From a Mon\nReceived: x\n y\nSubject: z\n\nbody\n\nFrom b\n",
      "RIFF\x24\0\0\0WAVEfmt "s + std::string(600, '\1'),
      "\xff\xfe<\0h\0t\0m\0l\0>\0"s,
  };
}

TEST(RecognizeHostile, every_truncation_of_a_sample_is_survived) {
  for (auto const& sample : all_samples()) {
    auto const step = std::max<std::size_t>(1, sample.size() / 300);
    for (std::size_t length = 0; length < sample.size(); length += step) {
      test::recognize(sample.substr(0, length));
    }
  }
}

TEST(RecognizeHostile, random_changes_of_samples_are_survived) {
  std::mt19937 random(20231);
  for (auto const& sample : all_samples()) {
    for (int round = 0; round < 400; ++round) {
      auto changed = sample;
      for (auto changes = random() % 12 + 1; changes != 0; --changes) {
        // The first bytes and the last ones hold most of the structure.
        auto const place = random() % 3;
        auto const reach = place == 0 ? changed.size() : std::min<std::size_t>(changed.size(), 512);
        auto const offset = random() % reach;
        changed[place == 2 ? changed.size() - 1 - offset : offset] = static_cast<char>(random());
      }
      test::recognize(changed);
    }
  }
}

TEST(RecognizeHostile, entries_that_overlap_without_end_are_survived) {
  auto entry = test::ZipBuilder().add("a", "").entries();
  std::string many;
  for (int i = 0; i < 50000; ++i) {
    many += entry;
  }
  EXPECT_EQ(test::recognize(many).type, tessarine::FileType::zip);
}

}  // namespace
