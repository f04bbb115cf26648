#include <string>
#include <vector>

#include "morvakit/formats.h"
#include "morvakit/office/drawing_text.h"
#include "morvakit/office/open_package.h"

namespace morvakit {

namespace {

/// Collects the slides' relationship ids in the order of the show.
class SlideListHandler final : public XmlHandler {
 public:
  explicit SlideListHandler(ReadContext& context) : context_(context) {}

  std::vector<std::string> const& ids() const { return ids_; }

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    auto const id = relation_id(attributes);
    if (name.local == "sldId" && slide_space.is(name.space) &&
        context_.charge_memory(sizeof(std::string) + id.size())) {
      ids_.emplace_back(id);
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  std::vector<std::string> ids_;
};

void read_backdrops_of_type(OpenPackage& package, std::vector<Relationship> const& relationships,
                            std::string_view type, TextFlow& flow) {
  for (auto const& relationship : relationships) {
    if (!relationship.external && relationship.type == type) {
      DrawingHandler handler(flow, Orlec::ParseTextType_hf, DrawingRole::backdrop);
      package.parse_once(relationship.target, handler);
    }
  }
}

/// The layout behind a slide and the master behind that: what stands on them outside of
/// placeholders shows on the slide.
void read_backdrops(OpenPackage& package, std::vector<Relationship> const& relationships,
                    TextFlow& flow) {
  for (auto const& relationship : relationships) {
    if (!relationship.external && relationship.type == "slideLayout" &&
        package.is_unread(relationship.target)) {
      read_backdrops_of_type(package, package.relationships(relationship.target), "slideMaster",
                             flow);
    }
  }
  read_backdrops_of_type(package, relationships, "slideLayout", flow);
}

void read_slide(OpenPackage& package, std::string const& part, TextFlow& flow) {
  DrawingHandler slide(flow, Orlec::ParseTextType_main);
  package.parse_once(part, slide);
  auto const relationships = package.relationships(part);
  read_graphics(package, relationships, flow);
  for (auto const& relationship : relationships) {
    if (relationship.external) {
      continue;
    }
    if (relationship.type == "notesSlide") {
      DrawingHandler notes(flow, Orlec::ParseTextType_remark);
      package.parse_once(relationship.target, notes);
    } else if (relationship.type == "comments") {
      DrawingHandler comments(flow, Orlec::ParseTextType_comment);
      package.parse_once(relationship.target, comments);
    }
  }
  read_controls(package, relationships, flow);
  read_link_targets(relationships, flow);
  read_backdrops(package, relationships, flow);
}

}  // namespace

void read_pptx(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  OpenPackage package(reader, context);
  if (!package.container().is_open()) {
    return;
  }
  auto const presentation = package.main_part();
  if (context.ended()) {
    return;
  }
  TextFlow flow(context);
  SlideListHandler list(context);
  package.parse_once(presentation, list);
  auto const relationships = package.relationships(presentation);
  RelationshipsById const by_id(relationships);
  for (auto const& id : list.ids()) {
    auto const* const slide = by_id.find(id);
    if (slide == nullptr) {
      context.note(Orlec::ParseOutcome::damaged, "the slide " + id + " is missing");
    } else if (!slide->external && package.expect(slide->target) &&
               package.is_unread(slide->target)) {
      context.count_pages(1);
      read_slide(package, slide->target, flow);
    }
    if (!context.keep_going()) {
      return;
    }
  }
  read_package_properties(package, flow);
  package.read_embedded_parts();
}

}  // namespace morvakit
