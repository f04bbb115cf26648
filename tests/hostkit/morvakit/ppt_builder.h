#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/utf8.h"
#include "hostkit/tessarine/memory_reader.h"
#include "hostkit/tessarine/ole_builder.h"

namespace test::ppt {

/// Records of PowerPoint 97 to 2003.
inline std::string record(int version, int type, int instance, std::string const& content) {
  return little(static_cast<std::uint64_t>(instance * 16 + version), 2) +
         little(static_cast<std::uint64_t>(type), 2) + little(content.size(), 4) + content;
}
inline std::string atom(int type, std::string const& content, int instance = 0) {
  return record(0, type, instance, content);
}
inline std::string container(int type, std::string const& content, int instance = 0) {
  return record(15, type, instance, content);
}

inline std::string utf16(std::string const& utf8) {
  std::string bytes;
  for (auto const character : morvabs::from_utf8(utf8)) {
    auto const value = static_cast<std::uint32_t>(character);
    bytes += value < 0x10000 ? little(value, 2)
                             : little(0xd800 + ((value - 0x10000) >> 10U), 2) +
                                   little(0xdc00 + ((value - 0x10000) & 0x3ffU), 2);
  }
  return bytes;
}
inline std::string string_record(std::string const& utf8, int instance) {
  return atom(4026, utf16(utf8), instance);
}

/// A text as it stands in a shape or in the outline: in one byte a character, or in two.
inline std::string text_in_bytes(std::string const& latin) {
  return atom(3999, little(0, 4)) + atom(4008, latin);
}
inline std::string text(std::string const& utf8) {
  return atom(3999, little(0, 4)) + atom(4000, utf16(utf8));
}

/// One entry of a shape's properties; `data` stands behind the table of them.
struct Property {
  int number;
  std::uint32_t value;
  std::string data;
};
inline std::string properties(std::vector<Property> const& list, int type = 0xf00b) {
  std::string table;
  std::string behind;
  for (auto const& property : list) {
    auto const flag = property.data.empty() ? 0 : 0x8000;
    table +=
        little(static_cast<std::uint64_t>(property.number | flag), 2) + little(property.value, 4);
    behind += property.data;
  }
  return record(3, type, static_cast<int>(list.size()), table + behind);
}
inline Property text_property(int number, std::string const& utf8) {
  auto const data = utf16(utf8) + std::string(2, '\0');
  return {number, static_cast<std::uint32_t>(data.size()), data};
}

inline std::string shape(std::string const& parts, int flags = 0) {
  return container(
      0xf004, record(2, 0xf00a, 1, little(1, 4) + little(static_cast<unsigned>(flags), 4)) + parts);
}
inline std::string text_box(std::string const& texts) {
  return container(0xf00d, texts);
}
inline std::string placeholder(int kind) {
  return container(
      0xf011, atom(3011, little(0, 4) + little(static_cast<unsigned>(kind), 1) + little(0, 3)));
}
inline std::string outline_reference(unsigned number) {
  return text_box(atom(3998, little(number, 4)));
}
inline std::string group(std::string const& shapes) {
  return container(0xf003, shapes);
}
/// A shape with a place in a table.
inline std::string cell(unsigned top, std::string const& words) {
  return shape(atom(0xf00f, little(0, 4) + little(top, 4) + little(0, 8)) + text_box(text(words)));
}
inline std::string table(std::string const& cells) {
  return group(shape(properties({{0x039f, 1, ""}}, 0xf122), 1) + cells);
}
inline std::string drawing(std::string const& shapes) {
  return container(1036, container(0xf002, container(0xf003, shapes)));
}
inline std::string headers_footers(std::string const& footer, int instance = 0) {
  return container(4057, atom(4058, little(0, 4)) + string_record(footer, 2), instance);
}
inline std::string comment(std::string const& words) {
  return container(5000,
                   container(5002, string_record("___PPT10", 0) +
                                       atom(5003, container(12000, string_record("author", 0) +
                                                                       string_record(words, 1) +
                                                                       string_record("a", 2)))));
}

/// A presentation, saved once or several times.
class Builder {
 public:
  /// What the presentation's own record holds beside the lists, and what is encrypted.
  std::string document_parts;
  std::uint32_t encryption = 0;

  /// Adds an object to what is saved next; its number.
  std::uint32_t add(std::string const& object) {
    unsaved_.emplace_back(next_, object);
    return next_++;
  }
  /// Saves a new state of an object.
  void replace(std::uint32_t number, std::string const& object) {
    unsaved_.emplace_back(number, object);
  }
  std::uint32_t add_slide(std::string const& shapes, std::string const& outline = {},
                          std::string const& more = {}, unsigned master = 0, unsigned notes = 0) {
    auto const number = add(slide(shapes, more, master, notes));
    list(slides_, number, 0x100 + number, outline);
    return number;
  }
  void add_notes(unsigned identifier, std::string const& shapes) {
    list(notes_, add(container(1008, drawing(shapes))), identifier, {});
  }
  void add_master(unsigned identifier, std::string const& shapes) {
    list(masters_, add(container(1016, drawing(shapes))), identifier, {});
  }
  void add_title_master(unsigned identifier, std::string const& shapes, unsigned master) {
    list(masters_, add(slide(shapes, {}, master, 0)), identifier, {});
  }
  /// Lists a slide once more.
  void list_slide(std::uint32_t number, std::string const& outline = {}) {
    list(slides_, number, 0, outline);
  }
  static std::string slide(std::string const& shapes, std::string const& more = {},
                           unsigned master = 0, unsigned notes = 0) {
    return container(1006, atom(1007, std::string(12, '\0') + little(master, 4) + little(notes, 4) +
                                          std::string(4, '\0')) +
                               drawing(shapes) + more);
  }
  /// An embedded object; `stored` is its record.
  void add_object(std::string const& stored, std::string const& name = "thing") {
    auto const number = add(stored);
    objects_ += container(
        4044, atom(4035, std::string(16, '\0') + little(number, 4) + std::string(4, '\0')) +
                  string_record(name, 1));
  }

  /// Writes all that has changed, and the lists of where it lies.
  void save() {
    unsaved_.emplace(unsaved_.begin(), 1,
                     container(1000, record(1, 1001, 0, std::string(40, '\0')) + document_parts +
                                         container(1033, objects_) + container(4080, masters_, 1) +
                                         container(4080, slides_, 0) + container(4080, notes_, 2)));
    std::string places;
    for (auto const& [number, object] : std::exchange(unsaved_, {})) {
      places += little(number | 1U << 20U, 4) + little(stream.size(), 4);
      stream += object;
    }
    auto const list_place = stream.size();
    stream += atom(6002, places);
    auto const former = edit_place;
    edit_place = stream.size();
    stream +=
        atom(4085, std::string(8, '\0') + little(former, 4) + little(list_place, 4) + little(1, 4) +
                       little(next_, 4) + little(0, 4) + little(encryption, 4));
  }

  std::string current_user() const {
    return atom(4086, little(20, 4) + little(0xe391c05f, 4) + little(edit_place, 4) +
                          std::string(12, '\0'));
  }
  /// The whole file, saved if that has not been done.
  std::string bytes() {
    if (stream.empty()) {
      save();
    }
    return make_ole({{"Current User", current_user()}, {"PowerPoint Document", stream}});
  }

  std::string stream;
  std::size_t edit_place = 0;

 private:
  static void list(std::string& sheets, std::uint32_t number, unsigned identifier,
                   std::string const& outline) {
    sheets += atom(1011, little(number, 4) + std::string(8, '\0') + little(identifier, 4) +
                             little(0, 4)) +
              outline;
  }

  std::vector<std::pair<std::uint32_t, std::string>> unsaved_;
  std::uint32_t next_ = 2;
  std::string slides_;
  std::string masters_;
  std::string notes_;
  std::string objects_;
};

}  // namespace test::ppt
