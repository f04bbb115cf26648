#pragma once

#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// A namespace under the two names that documents use for it; both may be the same.
struct Namespace {
  std::string_view name;
  std::string_view other_name;

  bool is(std::string_view space) const { return space == name || space == other_name; }
};

/// The elements that a reader has to do with. `Tag` is an enumeration whose value 0 stands for all
/// others.
template <typename Tag>
class TagTable {
 public:
  struct Row {
    Namespace space;
    std::string_view local;
    Tag tag;
  };

  TagTable(std::initializer_list<Row> rows) {
    for (auto const& row : rows) {
      rows_[row.local].push_back(row);
    }
  }

  Tag find(XmlName const& name) const {
    auto const found = rows_.find(name.local);
    if (found != rows_.end()) {
      for (auto const& row : found->second) {
        if (row.space.is(name.space)) {
          return row.tag;
        }
      }
    }
    return Tag{};
  }

 private:
  std::unordered_map<std::string_view, std::vector<Row>> rows_;
};

/// Alternatives of which a document offers several and a reader takes one.
class AlternateContent {
 public:
  /// Whether the name belongs to the vocabulary of alternatives at all.
  static bool owns(XmlName const& name);
  /// Whether the content of the element is to be read.
  bool enter(XmlName const& name, XmlAttributes const& attributes);
  void leave(XmlName const& name);

 private:
  std::vector<bool> taken_;
};

/// Gives a reader tags in place of names, leaves out what it does not want to see, and lets it see
/// one branch only of alternative content.
template <typename Tag>
class TaggedHandler : public XmlHandler {
 public:
  explicit TaggedHandler(TagTable<Tag> const& table) : table_(table) {}

 protected:
  /// An element begins; false leaves it out with all that it holds, and without a call of `close`.
  virtual bool open(Tag tag, XmlName const& name, XmlAttributes const& attributes) = 0;
  virtual void close(Tag tag) = 0;
  virtual void text(std::string_view utf8) = 0;

 private:
  struct Level {
    Tag tag;
    bool is_alternate;
  };

  void start(XmlName const& name, XmlAttributes const& attributes) final {
    bool const is_alternate = left_out_ == 0 && AlternateContent::owns(name);
    auto const tag = left_out_ == 0 && !is_alternate ? table_.find(name) : Tag{};
    if (left_out_ > 0 ||
        !(is_alternate ? alternates_.enter(name, attributes) : open(tag, name, attributes))) {
      ++left_out_;
      return;
    }
    levels_.push_back({tag, is_alternate});
  }

  void end(XmlName const& name) final {
    if (left_out_ > 0) {
      --left_out_;
      return;
    }
    auto const level = levels_.back();
    levels_.pop_back();
    if (level.is_alternate) {
      alternates_.leave(name);
    } else {
      close(level.tag);
    }
  }

  void characters(std::string_view utf8) final {
    if (left_out_ == 0) {
      text(utf8);
    }
  }

  TagTable<Tag> const& table_;
  AlternateContent alternates_;
  std::vector<Level> levels_;
  std::size_t left_out_ = 0;
};

}  // namespace morvakit
