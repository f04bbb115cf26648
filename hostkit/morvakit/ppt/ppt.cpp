#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "morvakit/formats.h"
#include "morvakit/ole/ole_properties.h"
#include "morvakit/ppt/ppt_directory.h"
#include "morvakit/ppt/ppt_document.h"
#include "morvakit/ppt/ppt_object.h"
#include "morvakit/ppt/ppt_records.h"
#include "morvakit/ppt/ppt_slide.h"
#include "morvakit/spool.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

/// What an entry of a set or a map of numbers costs.
constexpr std::size_t kept_in_set = 48;

/// Reads the sheets of a presentation in the order of its lists.
class Presentation {
 public:
  Presentation(PptStream& stream, PptDirectory const& directory, TextFlow& flow)
      : stream_(stream), directory_(directory), flow_(flow), document_(stream, flow) {}

  void read(PptRecord const& document);
  void read_objects();

 private:
  using List = PptDocumentHandler::List;
  using Identifiers = std::unordered_map<std::uint32_t, std::size_t>;

  Identifiers identifiers(List list) const;
  void read_slide(std::size_t index);
  void read_notes(std::size_t index);
  void read_masters(std::uint32_t identifier);
  bool is_first(PptRecord const& record);

  PptStream& stream_;
  PptDirectory const& directory_;
  TextFlow& flow_;
  PptDocumentHandler document_;
  Identifiers masters_;
  Identifiers notes_;
  std::unordered_set<std::int64_t> read_;
};

Presentation::Identifiers Presentation::identifiers(List list) const {
  Identifiers identifiers;
  auto const& sheets = document_.list(list);
  for (std::size_t i = 0; i < sheets.size() && stream_.context().charge_memory(kept_in_set); ++i) {
    identifiers.try_emplace(sheets[i].identifier, i);
  }
  return identifiers;
}

/// Whether a record was not read before: objects may be listed twice, or lie in one place.
bool Presentation::is_first(PptRecord const& record) {
  return stream_.context().charge_memory(kept_in_set) && read_.insert(record.offset).second;
}

void Presentation::read(PptRecord const& document) {
  stream_.walk(document, document_);
  masters_ = identifiers(PptDocumentHandler::masters);
  notes_ = identifiers(PptDocumentHandler::notes);
  auto const slides = document_.list(PptDocumentHandler::slides).size();
  for (std::size_t i = 0; i < slides && stream_.context().keep_going(); ++i) {
    read_slide(i);
  }
  auto const notes = document_.list(PptDocumentHandler::notes).size();
  for (std::size_t i = 0; i < notes && stream_.context().keep_going(); ++i) {
    read_notes(i);
  }
}

void Presentation::read_slide(std::size_t index) {
  auto const& listed = document_.list(PptDocumentHandler::slides)[index];
  PptSheetHandler handler(stream_, flow_, PptSheetRole::slide,
                          document_.outline(PptDocumentHandler::slides, index));
  auto const slide = directory_.find(listed.object, ppt::slide);
  if (!slide) {
    stream_.context().note(Orlec::ParseOutcome::damaged, "a slide is missing");
  } else if (is_first(*slide)) {
    stream_.context().count_pages(1);
    stream_.walk(*slide, handler);
  }
  handler.finish();
  if (auto const notes = notes_.find(handler.notes());
      handler.notes() != 0 && notes != notes_.end()) {
    read_notes(notes->second);
  }
  read_masters(handler.master());
}

void Presentation::read_notes(std::size_t index) {
  auto const object = document_.list(PptDocumentHandler::notes)[index].object;
  auto const notes = directory_.find(object, ppt::notes);
  if (!notes) {
    stream_.context().note(Orlec::ParseOutcome::incomplete, "the notes on a slide are missing");
  } else if (is_first(*notes)) {
    PptSheetHandler handler(stream_, flow_, PptSheetRole::notes,
                            document_.outline(PptDocumentHandler::notes, index));
    stream_.walk(*notes, handler);
    handler.finish();
  }
}

/// The master behind a slide and, where that is one for titles, the main one behind it.
void Presentation::read_masters(std::uint32_t identifier) {
  for (auto found = masters_.find(identifier); identifier != 0 && found != masters_.end();
       found = masters_.find(identifier)) {
    auto const object = document_.list(PptDocumentHandler::masters)[found->second].object;
    auto master = directory_.find(object, ppt::main_master);
    if (!master) {
      master = directory_.find(object, ppt::slide);
    }
    if (!master || !is_first(*master)) {
      return;
    }
    PptSheetHandler handler(stream_, flow_, PptSheetRole::master, {});
    stream_.walk(*master, handler);
    identifier = handler.master();
  }
}

void Presentation::read_objects() {
  for (auto const& listed : document_.objects()) {
    auto const object = directory_.find(listed.object, ppt::ole_storage);
    if (!object) {
      stream_.context().note(Orlec::ParseOutcome::incomplete, "an embedded object is missing");
    } else if (is_first(*object) && !read_embedded_object(stream_, *object, listed.name)) {
      return;
    }
  }
}

/// Reads whatever presentations and sheets stand in the stream, in the order in which they do:
/// without the lists of its objects it cannot be told which of them are valid.
void salvage(PptStream& stream, TextFlow& flow) {
  auto record = stream.record_at(0);
  for (; record && stream.context().keep_going(); record = stream.record_at(record->end())) {
    if (record->type == ppt::document) {
      PptDocumentHandler document(stream, flow);
      stream.walk(*record, document);
      auto const slides = document.list(PptDocumentHandler::slides).size();
      for (std::size_t i = 0; i < slides; ++i) {
        auto const outline = document.outline(PptDocumentHandler::slides, i);
        PptSheetHandler(stream, flow, PptSheetRole::slide, outline).finish();
      }
    } else if (record->type == ppt::slide || record->type == ppt::notes) {
      bool const is_slide = record->type == ppt::slide;
      stream.context().count_pages(is_slide ? 1 : 0);
      PptSheetHandler sheet(stream, flow, is_slide ? PptSheetRole::slide : PptSheetRole::notes, {});
      stream.walk(*record, sheet);
    }
  }
}

void salvage_objects(PptStream& stream) {
  auto record = stream.record_at(0);
  for (; record && stream.context().keep_going(); record = stream.record_at(record->end())) {
    if (record->type == ppt::ole_storage && !read_embedded_object(stream, *record, {})) {
      return;
    }
  }
}

/// `properties`: the storage that has them; null where it is lost.
void read_stream(PptStream& stream, std::string_view current_user,
                 tessarine::OleStorage const* properties, TextFlow& flow) {
  auto& context = stream.context();
  PptDirectory const directory(stream, current_user);
  if (directory.is_encrypted()) {
    context.end(Orlec::ParseOutcome::encrypted, "the document needs a password");
    return;
  }
  auto const document = directory.document();
  Presentation presentation(stream, directory, flow);
  if (document) {
    presentation.read(*document);
  } else {
    context.note(Orlec::ParseOutcome::damaged,
                 "the lists of the presentation's objects cannot be followed");
    salvage(stream, flow);
  }
  if (properties != nullptr) {
    read_ole_properties(*properties, flow);
  }
  if (document) {
    presentation.read_objects();
  } else {
    salvage_objects(stream);
  }
}

/// Where in a file the presentation's own record begins, which is the first one of its stream, and
/// by which that can be found at the beginning of a sector; negative where there is none.
std::int64_t find_presentation(Orlec::Reader const& reader, ReadContext& context) {
  using namespace std::string_view_literals;
  constexpr std::int64_t sector_size = 512;
  constexpr std::int64_t piece_size = 128 * sector_size;
  constexpr std::size_t first_within = 8;
  for (std::int64_t at = 0; at < reader.GetSize() && context.keep_going(); at += piece_size) {
    auto const piece = tessarine::read_piece(reader, at, piece_size);
    for (std::size_t i = 0; i < piece.size(); i += sector_size) {
      auto const sector = std::string_view(piece).substr(i, sector_size);
      if (sector.starts_with("\x0f\0\xe8\3"sv) &&
          sector.substr(first_within).starts_with("\1\0\xe9\3\x28\0\0\0"sv)) {
        return at + static_cast<std::int64_t>(i);
      }
    }
  }
  return -1;
}

}  // namespace

void read_ppt(tessarine::OleStorage const& storage, ReadContext& context) {
  constexpr std::int64_t longest_user = 64;
  // A file for PowerPoint 95 and 97 alike has the presentation twice, the newer form in a storage.
  auto const newer = storage.storage("PP97_DUALSTORAGE");
  auto const& home = newer.is_open() ? newer : storage;
  TextFlow flow(context);
  auto bytes = home.stream("PowerPoint Document");
  if (bytes == nullptr) {
    read_ole_properties(home, flow);
    if (home.has("PP40")) {
      context.end(Orlec::ParseOutcome::not_supported,
                  "presentations of PowerPoint 95 and before are not read");
    } else {
      context.end(Orlec::ParseOutcome::damaged, "the stream of the presentation is missing");
    }
    return;
  }
  PptStream stream(std::move(bytes), context);
  if (!stream.is_whole()) {
    context.note(Orlec::ParseOutcome::damaged, "the stream of the presentation is cut short");
  }
  read_stream(stream, home.content("Current User", longest_user), &home, flow);
}

void read_ppt_remains(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
                      ReadContext& context) {
  auto const begin = find_presentation(reader, context);
  if (begin < 0) {
    return;
  }
  PptStream stream(
      std::make_unique<ReaderSlice>(reader, "PowerPoint Document", begin, reader.GetSize() - begin),
      context);
  TextFlow flow(context);
  read_stream(stream, {}, nullptr, flow);
}

}  // namespace morvakit
