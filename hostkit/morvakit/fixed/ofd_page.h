#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "morvakit/fixed/placed_text.h"
#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// The text objects of an OFD page, template or annotation, in the order in which they stand. Takes
/// all events of the part and picks its own.
class OfdTextObjects {
 public:
  OfdTextObjects(TextFlow& flow, Orlec::ParseTextType kind) : text_(flow, kind) {}

  void start(XmlName const& name, XmlAttributes const& attributes);
  void end(XmlName const& name);
  void characters(std::string_view utf8);
  /// Ends the line: what follows belongs to another page or note.
  void end_line() { text_.end_line(); }

 private:
  /// The distances from character to character: numbers, of which "g 3 5.5" stands for three.
  class Distances {
   public:
    void read(std::string_view list);
    bool is_given() const { return is_given_; }
    /// False behind the last one.
    bool take(double& distance);

   private:
    std::string list_;
    std::string_view rest_;
    bool is_given_ = false;
    double repeated_ = 0;
    double times_ = 0;
  };

  void begin_object(XmlAttributes const& attributes);
  void begin_code(XmlAttributes const& attributes);
  void add_run();

  PlacedText text_;
  PageMatrix matrix_;
  double size_ = 0;
  std::string font_;
  PagePoint place_;  ///< of the next character, in the object
  PagePoint object_place_;
  Distances right_;
  Distances down_;
  bool in_code_ = false;
  bool behind_line_end_ = false;
  std::wstring code_;
  bool is_continued_ = false;
  std::vector<PlacedText::Character> run_;
};

/// Reads one page, template or resource of an OFD document.
class OfdPageHandler final : public XmlHandler {
 public:
  /// A page names a template that it shows, behind its own content or in front of it.
  using TemplateUser = std::function<void(std::string_view id, bool is_in_front)>;

  OfdPageHandler(TextFlow& flow, TemplateUser use_template)
      : flow_(flow),
        objects_(flow, Orlec::ParseTextType_main),
        use_template_(std::move(use_template)) {}

  /// Resources that the page has for itself alone.
  std::vector<std::string> const& resources() const { return resources_; }
  void finish() { objects_.end_line(); }

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

  TextFlow& flow_;
  OfdTextObjects objects_;
  TemplateUser use_template_;
  std::vector<std::string> resources_;
  bool in_resource_ = false;
};

/// Reads the annotations of one page: what a person wrote as comments, and what stamps and
/// watermarks say as other text.
class OfdAnnotationHandler final : public XmlHandler {
 public:
  explicit OfdAnnotationHandler(TextFlow& flow);

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

  TextFlow& flow_;
  OfdTextObjects notes_;
  OfdTextObjects marks_;
  OfdTextObjects* objects_;
  Orlec::ParseTextType line_kind_ = Orlec::ParseTextType_comment;
  bool in_line_ = false;
};

}  // namespace morvakit
