#include <string>
#include <string_view>
#include <utility>

#include "morvakit/formats.h"
#include "morvakit/text/text_source.h"

namespace morvakit {

namespace {

/// Makes one line feed of each line end, and a blank of every other control character but the tab.
class LineEnds {
 public:
  std::string_view convert(std::string_view utf8) {
    text_.clear();
    for (char const character : utf8) {
      auto const follows_return = std::exchange(after_return_, character == '\r');
      if (character == '\n' && follows_return) {
        continue;
      }
      auto const is_line_end = character == '\r' || character == '\f' || character == '\v';
      auto const is_control =
          static_cast<unsigned char>(character) < ' ' && character != '\t' && character != '\n';
      text_ += is_line_end ? '\n' : is_control ? ' ' : character;
    }
    return text_;
  }

 private:
  std::string text_;
  bool after_return_ = false;
};

}  // namespace

/// CSV is delivered as it stands: commas and quotes end words as well as the cells of a table do.
void read_plain_text(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
                     ReadContext& context) {
  LineEnds line_ends;
  read_decoded(reader, context, detect_text_encoding(reader, context),
               [&](std::string_view utf8, bool /*last*/) {
                 return context.text(Orlec::ParseTextType_main, line_ends.convert(utf8));
               });
}

}  // namespace morvakit
