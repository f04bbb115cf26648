#include "morvakit/office/open_package.h"

#include <array>
#include <charconv>
#include <utility>

#include "morvakit/archive/archive_member.h"
#include "morvakit/office/office_properties.h"
#include "morvakit/xml/part_path.h"

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
    auto const id = attributes.get("Id");
    auto const type = last_piece(attributes.get("Type"));
    auto const address = attributes.get("Target");
    auto target = external ? std::string(address) : resolve_part(source_, address);
    if (context_.charge_memory(sizeof(Relationship) + id.size() + type.size() + target.size())) {
      found_.push_back({std::string(id), std::string(type), std::move(target), external});
    }
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

/// Finds the number of pages among the properties that an office program keeps for itself.
class StatedPagesHandler final : public XmlHandler {
 public:
  /// 0 where there is none, or none that could be true.
  std::int64_t pages() const {
    constexpr std::int64_t most = 1000000;
    std::int64_t pages = 0;
    auto const* const end = text_.data() + text_.size();
    bool const is_number = std::from_chars(text_.data(), end, pages).ptr == end;
    return is_number && pages > 0 && pages <= most ? pages : 0;
  }

 private:
  void start(XmlName const& name, XmlAttributes const& /*attributes*/) override {
    is_inside_ = name.local == "Pages";
  }
  void end(XmlName const& /*name*/) override { is_inside_ = false; }
  void characters(std::string_view utf8) override {
    constexpr std::size_t longest = 20;
    if (is_inside_ && text_.size() < longest) {
      text_ += utf8.substr(0, longest);
    }
  }

  std::string text_;
  bool is_inside_ = false;
};

bool is_extended_properties(Relationship const& relationship) {
  return relationship.type == "extended-properties" || relationship.type == "extendedProperties";
}

}  // namespace

std::vector<Relationship> OpenPackage::relationships(std::string_view part) {
  auto const slash = part.rfind('/');
  auto const cut = slash == std::string_view::npos ? 0 : slash + 1;
  auto const name =
      std::string(part.substr(0, cut)) + "_rels/" + std::string(part.substr(cut)) + ".rels";
  std::vector<Relationship> found;
  RelationshipHandler handler(context_, part, found);
  parse_part(container_, context_, name, handler);
  for (auto const& relationship : found) {
    meet(relationship);
  }
  return found;
}

void OpenPackage::meet(Relationship const& relationship) {
  auto const& type = relationship.type;
  bool const is_picture = type == "image";
  bool const is_text = type == "aFChunk";
  bool const is_file = type == "package" || type == "oleObject";
  if (relationship.external || !(is_picture || is_text || is_file)) {
    return;
  }
  auto const part = container_.find(relationship.target);
  if (!part || !met_.insert(*part).second) {
    return;
  }
  if (is_picture) {
    context_.count_images(1);
  } else {
    (is_text ? text_pieces_ : embedded_).push_back(*part);
  }
}

void OpenPackage::read_embedded_parts() {
  for (auto const part : text_pieces_) {
    read_embedded_part(part);
  }
  for (auto const part : embedded_) {
    read_embedded_part(part);
  }
}

void OpenPackage::read_embedded_part(std::uint64_t part) {
  if (!context_.keep_going()) {
    return;
  }
  auto const& name = container_.name(part);
  ArchiveMember file(name, context_);
  container_.read_member(part, name,
                         [&file](std::string_view bytes) { return file.append(bytes); });
  file.finish();
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

bool OpenPackage::is_unread(std::string_view part) const {
  auto const place = find_part(container_, part);
  return place && parsed_.count(*place) == 0;
}

bool OpenPackage::expect(std::string_view part) {
  bool const is_there = find_part(container_, part).has_value();
  if (!is_there) {
    context_.note(Orlec::ParseOutcome::damaged, "the part " + std::string(part) + " is missing");
  }
  return is_there;
}

bool OpenPackage::take(std::string_view part) {
  auto const place = find_part(container_, part);
  return place && !context_.ended() && parsed_.insert(*place).second;
}

void OpenPackage::parse_once(std::string const& part, XmlHandler& handler, PartFault fault) {
  if (take(part)) {
    parse_part(container_, context_, part, handler, fault);
  }
}

void OpenPackage::read_once(std::string const& part, ZipContainer::Consumer const& consumer) {
  if (take(part)) {
    container_.read(*find_part(container_, part), consumer);
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
    if (relationship.type == "core-properties" || is_extended_properties(relationship) ||
        relationship.type == "custom-properties" || relationship.type == "customProperties") {
      PropertyHandler handler(flow, 2);
      package.parse_once(relationship.target, handler);
    }
  }
}

void count_stated_pages(OpenPackage& package) {
  for (auto const& relationship : package.relationships({})) {
    if (is_extended_properties(relationship)) {
      StatedPagesHandler handler;
      parse_part(package.container(), package.context(), relationship.target, handler,
                 PartFault::ignored);
      package.context().count_pages(handler.pages());
      return;
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
