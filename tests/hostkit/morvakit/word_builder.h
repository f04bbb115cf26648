#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/tessarine/memory_reader.h"
#include "hostkit/tessarine/ole_builder.h"

namespace test {

/// The stories of a Word document, by their number.
enum WordStory : std::size_t {
  story_body,
  story_footnotes,
  story_headers,
  story_macros,
  story_comments,
  story_endnotes,
  story_text_boxes,
  story_header_text_boxes,
};

/// How a run of text is written down.
struct WordRun {
  /// Properties of the characters and of the paragraph; the latter empty for none known.
  std::string characters = {};
  std::string paragraph = {};
  /// One byte for each character.
  bool in_bytes = false;
  /// What its piece says of changes to it.
  unsigned change = 0;
};

/// Builds documents of Word 97 and later. Each run is a piece of its own, with pages of formatting
/// of its own.
class WordBuilder {
 public:
  WordBuilder& add(std::u16string_view text, WordRun const& run = {},
                   std::size_t story = story_body) {
    runs_.push_back({std::u16string(text), run, story});
    return *this;
  }
  /// Text in another story.
  WordBuilder& add_to(std::size_t story, std::u16string_view text) { return add(text, {}, story); }

  /// Whether the runs lie in the stream in the order of the text.
  bool is_in_order = true;
  /// Lists of changes, which pieces refer to by their number.
  std::vector<std::string> changes;
  /// Tables by their place in the header's list.
  std::map<std::size_t, std::string> tables;
  /// The stream of data.
  std::string data;
  /// More streams of the document.
  std::vector<std::pair<std::string, std::string>> streams;
  /// Where a second header stands, in pages; 0 for none.
  unsigned next_header = 0;

  std::string text_stream() {
    std::string stream(header_size, '\0');
    lay_out(stream);
    put(stream, 0,
        little(0xA5EC, 2) + little(0xC1, 2) + little(0, 4) + little(next_header, 2) +
            little(0x0200, 2));
    put(stream, 24, little(header_size, 4) + little(text_end_, 4));
    put(stream, 0x20, little(14, 2));
    put(stream, 0x3E, little(22, 2));
    for (std::size_t story = 0; story < lengths_.size(); ++story) {
      put(stream, 0x4C + 4 * story, little(lengths_[story], 4));
    }
    put(stream, 0x98, little(93, 2));
    table_stream_.assign(64, '\0');
    for (auto const& [index, table] : tables) {
      put(stream, 0x9A + 8 * index, little(table_stream_.size(), 4) + little(table.size(), 4));
      table_stream_ += table;
    }
    return stream;
  }
  /// Of the last stream of text that was made.
  std::string const& table_stream() const { return table_stream_; }

  std::string bytes() {
    std::vector<std::pair<std::string, std::string>> all{{"WordDocument", text_stream()},
                                                         {"1Table", table_stream_}};
    if (!data.empty()) {
      all.emplace_back("Data", data);
    }
    all.insert(all.end(), streams.begin(), streams.end());
    return make_ole(all);
  }

 private:
  static constexpr std::size_t header_size = 2048;
  static constexpr std::size_t page_size = 512;

  struct Run {
    std::u16string text;
    WordRun form;
    std::size_t story;
    std::size_t offset = 0;
    std::size_t size() const { return text.size() * (form.in_bytes ? 1 : 2); }
  };

  static void put(std::string& stream, std::size_t at, std::string const& bytes) {
    stream.replace(at, bytes.size(), bytes);
  }

  static void append_text(std::string& stream, Run& run) {
    run.offset = stream.size();
    for (char16_t const unit : run.text) {
      stream += little(unit, run.form.in_bytes ? 1 : 2);
    }
  }

  /// A page that holds one list; `reference` is what points to it.
  static void append_page(std::string& stream, Run const& run, std::string const& list) {
    std::string page = little(run.offset, 4) + little(run.offset + run.size(), 4);
    page += little(32, 1);
    page.resize(64, '\0');
    page += list;
    page.resize(page_size - 1, '\0');
    stream += page + '\1';
  }

  void lay_out(std::string& stream) {
    std::stable_sort(runs_.begin(), runs_.end(),
                     [](Run const& left, Run const& right) { return left.story < right.story; });
    lengths_.fill(0);
    for (auto& run : runs_) {
      lengths_[run.story] += run.text.size();
    }
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      append_text(stream, runs_[is_in_order ? i : runs_.size() - 1 - i]);
    }
    text_end_ = stream.size();
    stream.resize((stream.size() + page_size - 1) / page_size * page_size, '\0');
    make_piece_table();
    make_pages(stream);
  }

  void make_piece_table() {
    std::string places;
    std::string entries;
    std::size_t position = 0;
    for (auto const& run : runs_) {
      places += little(position, 4);
      position += run.text.size();
      auto const place = run.form.in_bytes ? (run.offset * 2) | 0x40000000U : run.offset;
      entries += little(0, 2) + little(place, 4) + little(run.form.change, 2);
    }
    places += little(position, 4);
    std::string table;
    for (auto const& list : changes) {
      table += '\1' + little(list.size(), 2) + list;
    }
    tables[33] = table + '\2' + little(places.size() + entries.size(), 4) + places + entries;
  }

  void make_pages(std::string& stream) {
    auto runs = runs_;
    std::sort(runs.begin(), runs.end(),
              [](Run const& left, Run const& right) { return left.offset < right.offset; });
    std::string places;
    std::string character_pages;
    std::string paragraph_pages;
    bool const has_paragraphs = std::any_of(
        runs.begin(), runs.end(), [](Run const& run) { return !run.form.paragraph.empty(); });
    for (auto const& run : runs) {
      places += little(run.offset, 4);
      character_pages += little(stream.size() / page_size, 4);
      append_page(stream, run, little(run.form.characters.size(), 1) + run.form.characters);
      paragraph_pages += little(stream.size() / page_size, 4);
      auto const list =
          little(0, 2) + run.form.paragraph + std::string(run.form.paragraph.size() % 2, '\0');
      append_page(stream, run, '\0' + little(list.size() / 2, 1) + list);
    }
    places += little(text_end_, 4);
    tables[12] = places + character_pages;
    if (has_paragraphs) {
      tables[13] = places + paragraph_pages;
    }
  }

  std::vector<Run> runs_;
  std::array<std::size_t, 8> lengths_{};
  std::size_t text_end_ = 0;
  std::string table_stream_;
};

}  // namespace test
