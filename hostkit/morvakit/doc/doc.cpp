#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "morvakit/doc/doc_drawing.h"
#include "morvakit/doc/doc_formatting.h"
#include "morvakit/doc/doc_header.h"
#include "morvakit/doc/doc_piece_table.h"
#include "morvakit/doc/doc_text.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/ole/ole_properties.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using Orlec::ParseTextType;

/// The streams of a document.
struct WordStreams {
  std::unique_ptr<Orlec::Reader> text;
  std::unique_ptr<Orlec::Reader> tables;
  std::unique_ptr<Orlec::Reader> data;
};

ParseTextType kind_of(WordStory story) {
  switch (story) {
    case WordStory::footnotes:
      return Orlec::ParseTextType_fn;
    case WordStory::headers:
    case WordStory::header_text_boxes:
      return Orlec::ParseTextType_hf;
    case WordStory::comments:
      return Orlec::ParseTextType_comment;
    case WordStory::endnotes:
      return Orlec::ParseTextType_en;
    case WordStory::macros:
      return Orlec::ParseTextType_other;
    default:
      return Orlec::ParseTextType_main;
  }
}

/// The headers' story begins with what separates notes from the text: lines as a rule.
std::int64_t separators_length(WordHeader const& header, Orlec::Reader const* tables) {
  constexpr std::int64_t separators = 6;
  auto const extent = header.table(WordTable::header_stories);
  if (tables == nullptr || extent.size < 4 * (separators + 1)) {
    return 0;
  }
  return tessarine::little32(tessarine::read_piece(*tables, extent.offset + 4 * separators, 4), 0);
}

/// Reads the stories of the document, or of the building blocks within it, whose text is of one
/// kind.
void read_stories(WordHeader const& header, WordStreams const& streams,
                  std::optional<ParseTextType> only_kind, TextFlow& flow) {
  auto& context = flow.context();
  auto const pieces = read_pieces(header, *streams.text, streams.tables.get(), context);
  WordFormatting formatting(header, *streams.text, streams.tables.get(), streams.data.get(),
                            context);
  WordText text(pieces, formatting, *streams.text, streams.data.get(),
                header.code_page(streams.tables.get()), flow);
  for (std::size_t i = 0; i < word_story_count && !context.ended(); ++i) {
    auto const story = static_cast<WordStory>(i);
    auto begin = header.begin(story);
    auto const end = begin + header.length(story);
    if (story == WordStory::headers) {
      auto const headers = std::min(begin + separators_length(header, streams.tables.get()), end);
      text.read(begin, headers, Orlec::ParseTextType_other);
      begin = headers;
    }
    text.read(begin, end, only_kind.value_or(kind_of(story)));
  }
  // What no story lays claim to is a mark at the end, unless somebody hides something.
  text.read(header.total_length(), pieces.empty() ? 0 : pieces.back().end,
            Orlec::ParseTextType_other);
  context.count_images(text.images());
  if (streams.tables != nullptr && !header.is_old()) {
    context.count_images(read_drawings(*streams.tables, header.table(WordTable::drawings), flow));
  }
}

void read_objects(tessarine::OleStorage const& storage, ReadContext& context) {
  auto const pool = storage.storage("ObjectPool");
  for (auto const& entry : pool.entries()) {
    if (entry.is_storage && !read_embedded(pool.storage(entry.name), entry.name, context)) {
      return;
    }
  }
}

}  // namespace

void read_doc(tessarine::OleStorage const& storage, ReadContext& context) {
  WordStreams streams;
  streams.text = storage.stream("WordDocument");
  if (streams.text == nullptr) {
    context.end(ParseOutcome::damaged, "the stream of the text is missing");
    return;
  }
  auto const header = WordHeader::read(*streams.text, 0);
  if (!header.has_value()) {
    context.end(ParseOutcome::damaged, "the document's header is missing");
    return;
  }
  streams.tables = storage.stream(header->table_stream());
  streams.data = storage.stream("Data");
  if (streams.tables == nullptr) {
    context.note(ParseOutcome::damaged, "the stream of tables is missing");
  }
  TextFlow flow(context);
  read_stories(*header, streams, std::nullopt, flow);
  if (header->building_blocks() > 0) {
    if (auto const blocks = WordHeader::read(*streams.text, header->building_blocks());
        blocks.has_value()) {
      read_stories(*blocks, streams, Orlec::ParseTextType_other, flow);
    }
  }
  context.count_pages(read_ole_properties(storage, flow));
  read_objects(storage, context);
}

/// The main stream begins with the file's first sector, and as a rule goes on without gaps.
void read_doc_remains(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
                      ReadContext& context) {
  constexpr std::uint16_t large_sectors = 12;
  auto const sectors = tessarine::little16(tessarine::read_piece(reader, 30, 2), 0);
  std::int64_t const begin = sectors == large_sectors ? 4096 : 512;
  auto const open = [&] {
    return std::make_unique<ReaderSlice>(reader, "WordDocument", begin, reader.GetSize() - begin);
  };
  WordStreams streams;
  streams.text = open();
  auto const header = WordHeader::read(*streams.text, 0);
  if (!header.has_value()) {
    return;
  }
  streams.tables = header->is_old() ? open() : nullptr;
  TextFlow flow(context);
  read_stories(*header, streams, std::nullopt, flow);
}

}  // namespace morvakit
