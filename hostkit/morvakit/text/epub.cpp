#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "morvakit/archive/zip_container.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/element_text.h"
#include "morvakit/xml/part_path.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

using tessarine::FileType;

/// A file of the book as its package document lists it.
struct BookItem {
  std::string part;
  std::string type;
  bool is_navigation = false;
};

/// Reads the package documents' names from the container's description.
class ContainerHandler final : public XmlHandler {
 public:
  std::vector<std::string> packages;

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    constexpr std::size_t most = 100;
    if (name.local == "rootfile" && packages.size() < most) {
      packages.push_back(resolve_part({}, attributes.get("full-path")));
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}
};

/// Reads which parts are encrypted. Fonts that are only scrambled, so that they cannot be lifted
/// out of the book, count as what they are.
class EncryptionHandler final : public XmlHandler {
 public:
  explicit EncryptionHandler(ReadContext& context) : context_(context) {}

  std::vector<std::string> parts;

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local == "EncryptedData") {
      is_scrambled_font_ = false;
    } else if (name.local == "EncryptionMethod") {
      auto const algorithm = attributes.get("Algorithm");
      is_scrambled_font_ = algorithm == "http://www.idpf.org/2008/embedding" ||
                           algorithm == "http://ns.adobe.com/pdf/enc#RC";
    } else if (auto const uri = attributes.get("URI");
               name.local == "CipherReference" && !is_scrambled_font_ &&
               context_.charge_memory(uri.size() + sizeof(std::string))) {
      parts.push_back(resolve_part({}, uri));
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  bool is_scrambled_font_ = false;
};

/// Reads a package document: what the book is made of, in which order it is read, and its
/// properties.
class BookHandler final : public ElementText {
 public:
  BookHandler(TextFlow& flow, std::string_view part)
      : ElementText(flow.context()), flow_(flow), part_(part) {}

  std::vector<BookItem> const& items() const { return items_; }
  /// The items that are read from beginning to end, by their index.
  std::vector<std::size_t> spine() const {
    std::vector<std::size_t> order;
    for (auto const& id : order_) {
      if (auto const found = by_id_.find(id); found != by_id_.end()) {
        order.push_back(found->second);
      }
    }
    return order;
  }

 private:
  bool is_wanted(std::string_view name) const override {
    return in_metadata_ && name != "metadata" && name != "identifier";
  }

  void on_element(std::string_view name, XmlAttributes const& attributes) override {
    if (name == "metadata") {
      in_metadata_ = true;
    } else if (name == "manifest" || name == "spine") {
      in_metadata_ = false;
    } else if (name == "meta") {
      take_meta(attributes);
    } else if (name == "item") {
      take_item(attributes);
    } else if (auto const id = attributes.get("idref");
               name == "itemref" && context().charge_memory(id.size() + sizeof(std::string))) {
      order_.emplace_back(id);
    }
  }

  void take_meta(XmlAttributes const& attributes) {
    auto const property = attributes.get("property");
    meta_name_ = property.substr(property.find(':') + 1);
    // The older form has the value in an attribute; there the cover is the name of a picture.
    auto const name = attributes.get("name");
    if (!name.empty() && name != "cover" && !attributes.get("content").empty()) {
      put(name.substr(name.find(':') + 1), attributes.get("content"));
    }
  }

  void take_item(XmlAttributes const& attributes) {
    auto const id = attributes.get("id");
    auto const type = attributes.get("media-type");
    auto part = resolve_part(part_, attributes.get("href"));
    if (context().charge_memory(sizeof(BookItem) + part.size() + type.size() + sizeof(std::string) +
                                id.size())) {
      auto const is_navigation =
          (" " + std::string(attributes.get("properties")) + " ").find(" nav ") !=
          std::string::npos;
      by_id_.emplace(id, items_.size());
      items_.push_back({std::move(part), std::string(type), is_navigation});
    }
  }

  void on_text(std::string_view name, std::string_view text) override {
    put(name == "meta" ? std::string_view(meta_name_) : name, text);
  }

  void put(std::string_view name, std::string_view value) {
    if (!value.empty()) {
      flow_.line(Orlec::ParseTextType_property, std::string(name) + ": " + std::string(value));
    }
  }

  TextFlow& flow_;
  std::string part_;
  std::vector<BookItem> items_;
  std::unordered_map<std::string, std::size_t> by_id_;
  std::vector<std::string> order_;
  bool in_metadata_ = false;
  std::string meta_name_;
};

/// Reads a table of contents of either form: each entry is a line of other text.
class NavigationHandler final : public XmlHandler {
 public:
  NavigationHandler(TextFlow& flow, bool is_shown) : flow_(flow), is_shown_(is_shown) {}

  std::int64_t pages() const { return pages_; }

 private:
  static bool is_entry(std::string_view name) {
    return name == "a" || name == "span" || name == "text" ||
           (name.size() == 2 && name[0] == 'h' && name[1] >= '1' && name[1] <= '6');
  }

  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local == "nav") {
      in_page_list_ = attributes.get("type") == "page-list";
    }
    pages_ += name.local == "pageTarget" || (in_page_list_ && name.local == "li") ? 1 : 0;
    depth_ += is_entry(name.local) ? 1 : 0;
  }

  void end(XmlName const& name) override {
    depth_ -= is_entry(name.local) ? 1 : 0;
    if (depth_ == 0) {
      flow_.separate(Orlec::ParseTextType_other, '\n');
    }
  }

  void characters(std::string_view utf8) override {
    constexpr std::string_view blanks = " \t\r\n";
    while (depth_ > 0 && is_shown_ && !utf8.empty()) {
      auto const length = std::min(utf8.find_first_of(blanks), utf8.size());
      flow_.text(Orlec::ParseTextType_other, utf8.substr(0, length));
      utf8.remove_prefix(length);
      if (!utf8.empty()) {
        flow_.separate(Orlec::ParseTextType_other, ' ');
        utf8.remove_prefix(std::min(utf8.find_first_not_of(blanks), utf8.size()));
      }
    }
  }

  TextFlow& flow_;
  bool is_shown_;
  bool in_page_list_ = false;
  std::int64_t depth_ = 0;
  std::int64_t pages_ = 0;
};

bool is_page_type(std::string_view type) {
  return type == "application/xhtml+xml" || type == "text/html" || type == "text/x-oeb1-document" ||
         type == "application/x-dtbook+xml";
}

/// Whether an item is there for the sake of the pages: pictures, sounds, fonts, styles, programs.
bool is_auxiliary(std::string_view type) {
  constexpr std::array<std::string_view, 13> beginnings{"image/",
                                                        "audio/",
                                                        "video/",
                                                        "font/",
                                                        "text/css",
                                                        "text/javascript",
                                                        "application/font",
                                                        "application/x-font",
                                                        "application/java",
                                                        "application/ecmascript",
                                                        "application/smil",
                                                        "application/pls",
                                                        "application/vnd.ms-opentype"};
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [type](std::string_view beginning) { return type.starts_with(beginning); });
}

/// Reads one book.
class Book {
 public:
  Book(Orlec::Reader const& reader, ReadContext& context)
      : context_(context), flow_(context), container_(reader, context) {}

  void read();

 private:
  void list_encrypted();
  std::vector<std::string> packages();
  void read_package(std::string const& package);
  void read_item(BookItem const& item);
  void read_navigation(BookItem const& item);
  void read_page(std::uint64_t index, FileType type);
  void read_unlisted_pages();
  void read_attachments();
  /// The part of that name where it was not read before and can be.
  std::optional<std::uint64_t> take(std::string_view part);

  ReadContext& context_;
  TextFlow flow_;
  ZipContainer container_;
  std::unordered_set<std::uint64_t> encrypted_;
  std::unordered_set<std::uint64_t> taken_;
  std::vector<std::uint64_t> attachments_;
  bool has_locked_page_ = false;
  std::size_t pages_read_ = 0;
};

std::optional<std::uint64_t> Book::take(std::string_view part) {
  auto const index = container_.find(part);
  if (!index || !taken_.insert(*index).second) {
    return std::nullopt;
  }
  if (encrypted_.count(*index) != 0) {
    has_locked_page_ = true;
    return std::nullopt;
  }
  return index;
}

void Book::list_encrypted() {
  EncryptionHandler handler(context_);
  parse_part(container_, context_, "META-INF/encryption.xml", handler, PartFault::ignored);
  for (auto const& part : handler.parts) {
    if (auto const index = container_.find(part)) {
      encrypted_.insert(*index);
    }
  }
}

/// The package documents that the container names; where it names none, those that there are.
std::vector<std::string> Book::packages() {
  ContainerHandler handler;
  parse_part(container_, context_, "META-INF/container.xml", handler, PartFault::ignored);
  auto& names = handler.packages;
  names.erase(std::remove_if(names.begin(), names.end(),
                             [&](std::string const& name) { return !container_.find(name); }),
              names.end());
  for (std::uint64_t i = 0; names.empty() && i < container_.count(); ++i) {
    if (container_.name(i).ends_with(".opf")) {
      names.push_back(container_.name(i));
    }
  }
  return names;
}

/// Reads a page in a context of its own, so that a fault in it leaves the others.
void Book::read_page(std::uint64_t index, FileType type) {
  Spool page(container_.name(index), context_);
  container_.read(index, [&](std::string_view bytes) { return page.append(bytes); });
  auto own = context_.for_embedded();
  find_format(type).file(page, {type}, own);
  auto const outcome = own.outcome();
  if (outcome != Orlec::ParseOutcome::text && outcome != Orlec::ParseOutcome::no_text) {
    context_.note(outcome, "the part " + container_.name(index) + ", " + own.reason());
  }
  ++pages_read_;
}

void Book::read_item(BookItem const& item) {
  bool const is_page = is_page_type(item.type);
  bool const is_drawing = item.type == "image/svg+xml";
  if (!is_page && !is_drawing) {
    return;
  }
  if (auto const index = take(item.part)) {
    read_page(*index, is_page ? FileType::html : FileType::xml);
  }
}

void Book::read_navigation(BookItem const& item) {
  auto const index = container_.find(item.part);
  if (!index || encrypted_.count(*index) != 0) {
    return;
  }
  bool const is_unread = taken_.insert(*index).second;
  NavigationHandler handler(flow_, is_unread);
  parse_part(container_, context_, item.part, handler, PartFault::ignored);
  if (context_.counts().i_page == 0) {
    context_.count_pages(handler.pages());
  }
}

void Book::read_package(std::string const& package) {
  BookHandler book(flow_, package);
  parse_part(container_, context_, package, book);
  for (auto const index : book.spine()) {
    if (!context_.keep_going()) {
      return;
    }
    read_item(book.items()[index]);
  }
  for (auto const& item : book.items()) {
    if (!context_.keep_going()) {
      return;
    }
    bool const is_picture = item.type.starts_with("image/");
    context_.count_images(is_picture ? 1 : 0);
    if (item.is_navigation || item.type == "application/x-dtbncx+xml") {
      read_navigation(item);
    } else if (is_page_type(item.type)) {
      read_item(item);
    } else if (!is_auxiliary(item.type)) {
      if (auto const index = take(item.part)) {
        attachments_.push_back(*index);
      }
    }
  }
}

/// Pages that no package document lists come last, by their names.
void Book::read_unlisted_pages() {
  std::set<std::string_view> names;
  for (std::uint64_t i = 0; i < container_.count(); ++i) {
    std::string_view const name = container_.name(i);
    if (name.ends_with(".xhtml") || name.ends_with(".html") || name.ends_with(".htm")) {
      names.insert(name);
    }
  }
  for (auto const name : names) {
    if (auto const index = take(name); index && context_.keep_going()) {
      read_page(*index, FileType::html);
    }
  }
}

void Book::read_attachments() {
  for (auto const index : attachments_) {
    Spool file(container_.name(index), context_);
    container_.read(index, [&](std::string_view bytes) { return file.append(bytes); });
    if (!read_embedded(file, context_)) {
      return;
    }
  }
}

void Book::read() {
  if (!container_.is_open()) {
    return;
  }
  list_encrypted();
  auto const names = packages();
  if (names.empty()) {
    context_.note(Orlec::ParseOutcome::damaged, "the package document is missing");
  }
  for (auto const& name : names) {
    read_package(name);
  }
  read_unlisted_pages();
  read_attachments();
  if (has_locked_page_ && pages_read_ == 0) {
    context_.end(Orlec::ParseOutcome::encrypted, "the book is locked by its distributor");
  } else if (has_locked_page_) {
    context_.note(Orlec::ParseOutcome::incomplete, "parts of the book are locked");
  }
}

}  // namespace

void read_epub(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  Book(reader, context).read();
}

}  // namespace morvakit
