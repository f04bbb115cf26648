#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "morvabs/component.h"
#include "morvakit/formats.h"
#include "morvakit/text/html_component.h"
#include "morvakit/text/html_encoding.h"
#include "morvakit/text/text_source.h"

namespace morvakit {

namespace {

template <std::size_t N>
bool is_one_of(std::array<std::string_view, N> const& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_block(std::string_view name) {
  constexpr std::array<std::string_view, 48> names{
      "address",  "article", "aside",    "blockquote", "body",   "br",     "button",
      "caption",  "center",  "dd",       "details",    "dialog", "dir",    "div",
      "dl",       "dt",      "fieldset", "figcaption", "figure", "footer", "form",
      "frameset", "h1",      "h2",       "h3",         "h4",     "h5",     "h6",
      "head",     "header",  "hr",       "iframe",     "legend", "li",     "main",
      "menu",     "nav",     "ol",       "optgroup",   "option", "p",      "pre",
      "section",  "select",  "summary",  "table",      "title",  "tr"};
  return name == "ul" || name == "textarea" || is_one_of(names, name);
}

/// What a program reads, not a person.
bool is_code(std::string_view name) {
  return name == "script" || name == "style";
}

/// Text that a browser shows in some cases only.
bool is_spare(std::string_view name) {
  constexpr std::array<std::string_view, 4> names{"template", "noscript", "noembed", "noframes"};
  return is_one_of(names, name);
}

/// Text with its white space run together, of which the latest kind stands between two words.
class Words {
 public:
  Words(ReadContext& context, Orlec::ParseTextType type) : context_(context), type_(type) {}

  /// A line end counts above a tab, and a tab above a blank.
  void separate(char separator) {
    if (pending_ != '\n' && (pending_ != '\t' || separator == '\n')) {
      pending_ = separator;
    }
  }

  void add(std::string_view utf8, bool keep_lines) {
    while (!utf8.empty()) {
      auto const blank = blank_length(utf8);
      if (blank != 0) {
        separate(keep_lines && utf8.front() == '\n' ? '\n' : ' ');
        utf8.remove_prefix(blank);
        continue;
      }
      auto length = std::size_t{1};
      while (length < utf8.size() && blank_length(utf8.substr(length)) == 0) {
        ++length;
      }
      add_word(utf8.substr(0, length));
      utf8.remove_prefix(length);
    }
  }

  void flush() {
    context_.text(type_, buffer_);
    buffer_.clear();
  }

 private:
  static std::size_t blank_length(std::string_view utf8) {
    if (static_cast<unsigned char>(utf8.front()) <= ' ') {
      return 1;
    }
    return utf8.starts_with("\xc2\xa0") ? 2 : 0;
  }

  void add_word(std::string_view word) {
    constexpr std::size_t buffer_size = 16 << 10;
    if (pending_ != '\0' && has_text_) {
      buffer_ += pending_;
    }
    pending_ = '\0';
    has_text_ = true;
    buffer_ += word;
    if (buffer_.size() >= buffer_size) {
      flush();
    }
  }

  ReadContext& context_;
  Orlec::ParseTextType type_;
  std::string buffer_;
  char pending_ = '\0';
  bool has_text_ = false;
};

/// Turns the events of a page into text by kind.
class Page final : public HtmlEvents {
 public:
  explicit Page(ReadContext& context)
      : context_(context),
        main_(context, Orlec::ParseTextType_main),
        control_(context, Orlec::ParseTextType_control),
        property_(context, Orlec::ParseTextType_property),
        other_(context, Orlec::ParseTextType_other) {}

  void start(std::string_view name, HtmlAttributes const& attributes) override {
    if (++depth_ > context_.limits().i_xml_depth) {
      flush();
      context_.end(
          Orlec::ParseOutcome::limit_reached,
          "elements nested over " + std::to_string(context_.limits().i_xml_depth) + " deep");
      return;
    }
    code_ += is_code(name) ? 1 : 0;
    spare_ += is_spare(name) ? 1 : 0;
    controls_ += name == "textarea" || name == "option" ? 1 : 0;
    preformatted_ += name == "pre" || name == "textarea" ? 1 : 0;
    separate_for(name);
    if (code_ == 0) {
      take_attributes(name, attributes);
    }
  }

  void end(std::string_view name) override {
    depth_ -= depth_ > 0 ? 1 : 0;
    code_ -= code_ > 0 && is_code(name) ? 1 : 0;
    preformatted_ -= preformatted_ > 0 && (name == "pre" || name == "textarea") ? 1 : 0;
    separate_for(name);
    controls_ -= controls_ > 0 && (name == "textarea" || name == "option") ? 1 : 0;
    spare_ -= spare_ > 0 && is_spare(name) ? 1 : 0;
  }

  void characters(std::string_view utf8) override {
    if (code_ == 0) {
      words().add(utf8, preformatted_ != 0);
    }
  }

  /// Delivers what is gathered; nothing is taken any more once the context has ended.
  void flush() {
    for (auto* words : {&main_, &control_, &property_, &other_}) {
      words->flush();
    }
  }

 private:
  /// Where text goes at this place of the page.
  Words& words() {
    if (spare_ != 0) {
      return other_;
    }
    return controls_ != 0 ? control_ : main_;
  }

  void separate_for(std::string_view name) {
    if (name == "td" || name == "th") {
      words().separate('\t');
    } else if (is_block(name) || is_spare(name)) {
      words().separate('\n');
    }
  }

  void add_line(Words& words, std::string_view text) {
    words.separate('\n');
    words.add(text, false);
  }

  void take_attributes(std::string_view name, HtmlAttributes const& attributes) {
    for (auto const* const key : {"alt", "title", "placeholder", "aria-label", "label"}) {
      if (auto const text = attributes.get(key); !text.empty()) {
        add_line(other_, text);
      }
    }
    if (name == "input") {
      constexpr std::array<std::string_view, 5> silent{"hidden", "password", "checkbox", "radio",
                                                       "image"};
      if (!is_one_of(silent, attributes.get("type"))) {
        add_line(control_, attributes.get("value"));
      }
    } else if (name == "meta") {
      constexpr std::array<std::string_view, 4> kept{"author", "description", "keywords",
                                                     "subject"};
      auto const key = attributes.get("name");
      auto const* const known = std::find_if(kept.begin(), kept.end(), [key](std::string_view own) {
        return std::equal(own.begin(), own.end(), key.begin(), key.end(), [](char a, char b) {
          return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b);
        });
      });
      if (known != kept.end() && !attributes.get("content").empty()) {
        add_line(property_, std::string(*known) + ": ");
        property_.add(attributes.get("content"), false);
      }
    }
  }

  ReadContext& context_;
  Words main_;
  Words control_;
  Words property_;
  Words other_;
  std::int64_t depth_ = 0;
  std::int64_t code_ = 0;
  std::int64_t spare_ = 0;
  std::int64_t controls_ = 0;
  std::int64_t preformatted_ = 0;
};

}  // namespace

void read_html(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  read_html_part(reader, {}, context);
}

void read_html_part(Orlec::Reader const& reader, std::string_view declared_encoding,
                    ReadContext& context) {
  static auto const make_parser = reinterpret_cast<MakeHtmlParserFunction>(
      morvabs::component_function(html_component_file, make_html_parser_symbol));
  if (make_parser == nullptr) {
    context.end(Orlec::ParseOutcome::not_supported, "the HTML component is not installed");
    return;
  }
  auto const encoding = find_html_encoding(reader, context, declared_encoding);
  Page page(context);
  std::unique_ptr<HtmlParser> parser;
  make_parser(parser, page);
  if (parser == nullptr) {
    context.end(Orlec::ParseOutcome::failed, "there is no memory for the HTML parser");
    return;
  }
  read_decoded(reader, context, encoding, [&](std::string_view utf8, bool last) {
    parser->feed(utf8, last);
    page.flush();
    return context.keep_going();
  });
}

}  // namespace morvakit
