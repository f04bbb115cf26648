#include "morvakit/pdf/pdf_parts.h"

#include <array>
#include <utility>

#include <Dict.h>
#include <Stream.h>
#include <XRef.h>

namespace morvakit {

namespace {

/// The last part of a path in either system's manner.
std::string file_name(std::string const& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace

PdfParts::PdfParts(PDFDoc& document, PdfSink& sink)
    : document_(document), sink_(sink), catalog_(document.getXRef()->getCatalog()) {}

/// False when no more of the part is wanted.
bool PdfParts::read_stream(Object const& stream) {
  auto const packed = packed_size(stream);
  bool is_wanted = true;
  read_pdf_stream(stream, [&](std::string_view bytes) {
    is_wanted = sink_.part_bytes(bytes, packed);
    return is_wanted;
  });
  return is_wanted;
}

void PdfParts::read_metadata() {
  auto const metadata = catalog_.isDict() ? catalog_.dictLookup("Metadata") : Object(objNull);
  if (metadata.isStream() && sink_.begin_part(PdfPart::metadata, {})) {
    read_stream(metadata);
    sink_.end_part();
  }
}

void PdfParts::read_form() {
  auto const form = catalog_.isDict() ? catalog_.dictLookup("AcroForm") : Object(objNull);
  auto const xfa = form.isDict() ? form.dictLookup("XFA") : Object(objNull);
  if ((!xfa.isStream() && !xfa.isArray()) || !sink_.begin_part(PdfPart::form, {})) {
    return;
  }
  if (xfa.isStream()) {
    read_stream(xfa);
  }
  // The name of each packet and its stream, which together are one XML document.
  for (int i = 1; xfa.isArray() && i < xfa.arrayGetLength() && sink_.keep_going(); i += 2) {
    auto const packet = xfa.arrayGet(i);
    if (packet.isStream() && !read_stream(packet)) {
      break;
    }
  }
  sink_.end_part();
}

void PdfParts::add_file(Object const& specification) {
  auto const dictionary =
      specification.isRef() ? specification.fetch(document_.getXRef()) : specification.copy();
  if (dictionary.isDict() && files_met_.is_new(specification)) {
    auto const description = to_text(dictionary.dictLookup("Desc"), sink_);
    if (!description.empty() && sink_.separate(Orlec::ParseTextType_other, '\n')) {
      sink_.text(Orlec::ParseTextType_other, description);
    }
    file_specifications_.push_back(specification.copy());
  }
}

void PdfParts::add_listed_files() {
  if (!catalog_.isDict()) {
    return;
  }
  auto const names = catalog_.dictLookup("Names");
  if (names.isDict()) {
    add_tree(names.getDict()->lookupNF("EmbeddedFiles"));
  }
  auto const associated = catalog_.dictLookup("AF");
  for (int i = 0; associated.isArray() && i < associated.arrayGetLength(); ++i) {
    if (!sink_.keep_going()) {
      return;
    }
    add_file(associated.arrayGetNF(i));
  }
}

void PdfParts::add_tree(Object const& root) {
  PdfObjectsMet met;
  std::vector<Object> open;
  open.push_back(root.copy());
  // Nodes that stand within each other, rather than referred to, are as deep as a file is parsed.
  while (!open.empty() && sink_.keep_going()) {
    auto const reference = std::move(open.back());
    open.pop_back();
    auto const node = reference.isRef() ? reference.fetch(document_.getXRef()) : reference.copy();
    if (!node.isDict() || !met.is_new(reference)) {
      continue;
    }
    add_names(node);
    auto const kids = node.dictLookup("Kids");
    for (int i = kids.isArray() ? kids.arrayGetLength() : 0; i > 0; --i) {
      open.push_back(kids.arrayGetNF(i - 1).copy());
    }
  }
}

void PdfParts::add_names(Object const& node) {
  auto const names = node.dictLookup("Names");
  for (int i = 1; names.isArray() && i < names.arrayGetLength() && sink_.keep_going(); i += 2) {
    add_file(names.arrayGetNF(i));
  }
}

void PdfParts::read_files() {
  constexpr std::array keys{"UF", "F", "Unix", "DOS", "Mac"};
  for (auto const& reference : file_specifications_) {
    auto const file = reference.isRef() ? reference.fetch(document_.getXRef()) : reference.copy();
    auto const streams = file.isDict() ? file.dictLookup("EF") : Object(objNull);
    auto const wide_name = file.isDict() ? to_text(file.dictLookup("UF"), sink_) : std::string{};
    auto const name =
        wide_name.empty() && file.isDict() ? to_text(file.dictLookup("F"), sink_) : wide_name;
    for (auto const* const key : keys) {
      auto const stream = streams.isDict() ? streams.dictLookup(key) : Object(objNull);
      if (!stream.isStream() || !streams_met_.is_new(streams.dictLookupNF(key))) {
        continue;
      }
      if (!sink_.keep_going() || !sink_.begin_part(PdfPart::file, file_name(name))) {
        return;
      }
      read_stream(stream);
      if (!sink_.end_part()) {
        return;
      }
    }
  }
}

}  // namespace morvakit
