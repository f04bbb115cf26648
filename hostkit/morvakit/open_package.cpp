#include "morvakit/open_package.h"

#include <array>
#include <utility>

#include "morvakit/office_properties.h"
#include "morvakit/part_path.h"

namespace morvakit {

namespace {

std::string_view last_piece(std::string_view address) {
  auto const slash = address.rfind('/');
  return slash == std::string_view::npos ? address : address.substr(slash + 1);
}

class RelationshipHandler final : public XmlHandler {
 public:
  RelationshipHandler(ReadContext& context, std::string_view source,
                      std::vector<Relationship>& found)
      : context_(context), source_(source), found_(found) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local != "Relationship") {
      return;
    }
    bool const external = attributes.get("TargetMode") == "External";
    auto const target = attributes.get("Target");
    if (!context_.charge_memory(sizeof(Relationship) + attributes.get("Id").size() + target.size() +
                                source_.size())) {
      return;
    }
    found_.push_back({std::string(attributes.get("Id")),
                      std::string(last_piece(attributes.get("Type"))),
                      external ? std::string(target) : resolve_part(source_, target), external});
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  std::string_view source_;
  std::vector<Relationship>& found_;
};

/// Reads the property bag of a control: the values that a user can see.
class ControlHandler final : public XmlHandler {
 public:
  explicit ControlHandler(TextFlow& flow) : flow_(flow) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local != "ocxPr") {
      return;
    }
    static constexpr std::array<std::string_view, 5> shown{"Caption", "Value", "Text", "ListItems",
                                                           "GroupName"};
    auto const property = attributes.get("name");
    for (auto const candidate : shown) {
      if (property == candidate) {
        flow_.line(Orlec::ParseTextType_control, attributes.get("value"));
      }
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  TextFlow& flow_;
};

}  // namespace

std::vector<Relationship> OpenPackage::relationships(std::string_view part) {
  auto const slash = part.rfind('/');
  auto const cut = slash == std::string_view::npos ? 0 : slash + 1;
  auto const name =
      std::string(part.substr(0, cut)) + "_rels/" + std::string(part.substr(cut)) + ".rels";
  std::vector<Relationship> found;
  RelationshipHandler handler(context_, part, found);
  parse_part(container_, context_, name, handler);
  return found;
}

std::string OpenPackage::main_part() {
  for (auto const& relationship : relationships({})) {
    if (relationship.type == "officeDocument" && !relationship.external &&
        container_.find(relationship.target)) {
      return relationship.target;
    }
  }
  context_.end(Orlec::ParseOutcome::damaged, "the document's main part is missing");
  return {};
}

void OpenPackage::parse_once(std::string const& part, XmlHandler& handler, PartFault fault) {
  if (!context_.ended() && parsed_.insert(part).second) {
    parse_part(container_, context_, part, handler, fault);
  }
}

void OpenPackage::read_once(std::string const& part, ZipContainer::Consumer const& consumer) {
  if (context_.ended() || !parsed_.insert(part).second) {
    return;
  }
  if (auto const index = container_.find(part)) {
    container_.read(*index, consumer);
  }
}

RelationshipsById::RelationshipsById(std::vector<Relationship> const& relationships) {
  for (auto const& relationship : relationships) {
    by_id_.emplace(relationship.id, &relationship);
  }
}

Relationship const* RelationshipsById::find(std::string_view id) const {
  auto const found = by_id_.find(id);
  return found == by_id_.end() ? nullptr : found->second;
}

std::string_view relation_id(XmlAttributes const& attributes, std::string_view local) {
  auto const id = attributes.get(relation_space.name, local);
  return id.empty() ? attributes.get(relation_space.other_name, local) : id;
}

void read_package_properties(OpenPackage& package, TextFlow& flow) {
  for (auto const& relationship : package.relationships({})) {
    if (relationship.type == "core-properties" || relationship.type == "extended-properties" ||
        relationship.type == "extendedProperties" || relationship.type == "custom-properties" ||
        relationship.type == "customProperties") {
      PropertyHandler handler(flow, 2);
      package.parse_once(relationship.target, handler);
    }
  }
}

void read_link_targets(std::vector<Relationship> const& relationships, TextFlow& flow) {
  for (auto const& relationship : relationships) {
    if (relationship.external && relationship.type == "hyperlink") {
      flow.line(Orlec::ParseTextType_other, relationship.target);
    }
  }
}

void read_controls(OpenPackage& package, std::vector<Relationship> const& relationships,
                   TextFlow& flow) {
  for (auto const& relationship : relationships) {
    if (relationship.type == "control" && !relationship.external) {
      ControlHandler handler(flow);
      package.parse_once(relationship.target, handler);
    }
  }
}

}  // namespace morvakit
