#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/archive/zip_container.h"
#include "morvakit/read_context.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/tagged_handler.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

// The vocabularies of Office Open XML, transitional and strict.
inline constexpr Namespace word_space{
    "http://schemas.openxmlformats.org/wordprocessingml/2006/main",
    "http://purl.oclc.org/ooxml/wordprocessingml/main"};
inline constexpr Namespace sheet_space{"http://schemas.openxmlformats.org/spreadsheetml/2006/main",
                                       "http://purl.oclc.org/ooxml/spreadsheetml/main"};
inline constexpr Namespace slide_space{"http://schemas.openxmlformats.org/presentationml/2006/main",
                                       "http://purl.oclc.org/ooxml/presentationml/main"};
inline constexpr Namespace drawing_space{"http://schemas.openxmlformats.org/drawingml/2006/main",
                                         "http://purl.oclc.org/ooxml/drawingml/main"};
inline constexpr Namespace math_space{"http://schemas.openxmlformats.org/officeDocument/2006/math",
                                      "http://purl.oclc.org/ooxml/officeDocument/math"};
inline constexpr Namespace relation_space{
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships",
    "http://purl.oclc.org/ooxml/officeDocument/relationships"};

/// A link from one part to another, or to somewhere outside.
struct Relationship {
  std::string id;
  /// Last piece of the type's address, as "header": the same in all variants of the format.
  std::string type;
  /// Name of a part, resolved; the address as it stands where `external` is set.
  std::string target;
  bool external = false;
};

/// A document of parts that are found through relationships, as Office Open XML has them. Pictures
/// and embedded files are met on the way: what the parts refer to whose relationships were asked
/// for is counted, or kept for `read_embedded_parts`.
class OpenPackage {
 public:
  OpenPackage(Orlec::Reader const& reader, ReadContext& context)
      : context_(context), container_(reader, context) {}

  ReadContext& context() { return context_; }
  ZipContainer& container() { return container_; }

  /// The relationships of a part, or of the package itself for the empty name, in their order.
  std::vector<Relationship> relationships(std::string_view part);
  /// The part that the package's relationships name as the document; ends the context where there
  /// is none.
  std::string main_part();
  /// Whether there is a part of that name that was not parsed yet, by whatever name.
  bool is_unread(std::string_view part) const;
  /// Notes the damage where there is no part of that name; whether there is one.
  bool expect(std::string_view part);
  /// Parses a part that was not parsed before: relationships may form circles.
  void parse_once(std::string const& part, XmlHandler& handler,
                  PartFault fault = PartFault::damage);
  /// The same for a part that is no XML.
  void read_once(std::string const& part, ZipContainer::Consumer const& consumer);

  /// Reads the embedded files that were met, those first that are a piece of the document's own
  /// text kept in another format. To be called when all other text has been delivered.
  void read_embedded_parts();

 private:
  /// False where there is no such part, or it was taken before.
  bool take(std::string_view part);
  void meet(Relationship const& relationship);
  void read_embedded_part(std::uint64_t part);

  ReadContext& context_;
  ZipContainer container_;
  // By their places in the container, where a part has one whatever it is called by.
  std::unordered_set<std::uint64_t> parsed_;
  std::unordered_set<std::uint64_t> met_;
  std::vector<std::uint64_t> text_pieces_;
  std::vector<std::uint64_t> embedded_;
};

/// Finds relationships by their id. They stay the caller's and have to outlive it.
class RelationshipsById {
 public:
  explicit RelationshipsById(std::vector<Relationship> const& relationships);
  /// The first relationship of that id; null when there is none.
  Relationship const* find(std::string_view id) const;

 private:
  std::unordered_map<std::string_view, Relationship const*> by_id_;
};

/// The relationship id among an element's attributes.
std::string_view relation_id(XmlAttributes const& attributes, std::string_view local = "id");

/// What all Office Open XML documents have in common: properties, and the addresses behind links.
void read_package_properties(OpenPackage& package, TextFlow& flow);
/// Counts the pages that the properties state.
void count_stated_pages(OpenPackage& package);
void read_link_targets(std::vector<Relationship> const& relationships, TextFlow& flow);
/// Captions and values of the controls that a part refers to.
void read_controls(OpenPackage& package, std::vector<Relationship> const& relationships,
                   TextFlow& flow);

}  // namespace morvakit
