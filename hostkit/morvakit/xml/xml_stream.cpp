#include "morvakit/xml/xml_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <utility>

#include <expat.h>

#include "morvabs/text_decoder.h"

namespace morvakit {

namespace {

/// Stands between namespace and local name in what the parser passes. White space cannot be part of
/// a name, and the parser refuses a namespace that holds it.
constexpr char name_separator = '\n';

/// Whether the parser was refused memory since it was last asked to go on: it takes that for faults
/// of the document at times.
thread_local bool is_refused = false;

void* noted(void* memory) {
  is_refused = is_refused || memory == nullptr;
  return memory;
}

XML_Memory_Handling_Suite const noting_memory = {
    [](std::size_t size) { return noted(std::malloc(size)); },
    [](void* memory, std::size_t size) { return noted(std::realloc(memory, size)); },
    [](void* memory) { std::free(memory); },
};

XmlName split(char const* text) {
  std::string_view const whole = text;
  auto const at = whole.rfind(name_separator);
  if (at == std::string_view::npos) {
    return {{}, whole};
  }
  return {whole.substr(0, at), whole.substr(at + 1)};
}

bool starts_with(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

std::string upper(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return result;
}

/// The name in the declaration of a document whose bytes are ASCII there; empty without one.
std::string declared_encoding(std::string_view head) {
  if (!starts_with(head, "<?xml")) {
    return {};
  }
  auto const declaration = head.substr(0, head.find("?>"));
  auto at = declaration.find("encoding");
  if (at == std::string_view::npos) {
    return {};
  }
  at = declaration.find_first_of("\"'", at);
  if (at == std::string_view::npos) {
    return {};
  }
  auto const close = declaration.find(declaration[at], at + 1);
  if (close == std::string_view::npos) {
    return {};
  }
  return upper(declaration.substr(at + 1, close - at - 1));
}

struct InputEncoding {
  char const* parser = "UTF-8";  ///< what the parser is told
  std::string decoded_from;      ///< where not empty, the bytes are turned into UTF-8 first
};

/// The parser is always told an encoding, because many documents declare one that they are not in:
/// a mark or the zero bytes of UTF-16 stand above the declaration, and a declaration that was read
/// as ASCII cannot be UTF-16.
InputEncoding find_encoding(std::string_view head) {
  using namespace std::string_view_literals;
  if (starts_with(head, "\xFF\xFE\0\0"sv) || starts_with(head, "\0\0\xFE\xFF"sv)) {
    return {"UTF-8", "UTF-32"};
  }
  if (starts_with(head, "\xFF\xFE"sv) || starts_with(head, "\xFE\xFF"sv)) {
    return {"UTF-16", {}};
  }
  if (starts_with(head, "<\0"sv)) {
    return {"UTF-16LE", {}};
  }
  if (starts_with(head, "\0<"sv)) {
    return {"UTF-16BE", {}};
  }
  auto declared = declared_encoding(head);
  if (declared.empty() || declared == "UTF-8" || declared == "UTF8" || declared == "US-ASCII" ||
      starts_with(declared, "UTF-16") || starts_with(declared, "UCS-2") ||
      starts_with(head, "\xEF\xBB\xBF")) {
    return {};
  }
  return {"UTF-8", std::move(declared)};
}

}  // namespace

XmlAttributes::XmlAttributes(char const* const* names_and_values) : pairs_(names_and_values) {
  while (pairs_ != nullptr && pairs_[2 * count_] != nullptr) {
    ++count_;
  }
}

std::string_view XmlAttributes::get(std::string_view local) const {
  for (std::size_t i = 0; i < count(); ++i) {
    if (name(i).local == local) {
      return value(i);
    }
  }
  return {};
}

std::string_view XmlAttributes::get(std::string_view space, std::string_view local) const {
  for (std::size_t i = 0; i < count(); ++i) {
    auto const found = name(i);
    if (found.local == local && found.space == space) {
      return value(i);
    }
  }
  return {};
}

XmlName XmlAttributes::name(std::size_t index) const {
  return split(pairs_[2 * index]);
}

std::string_view XmlAttributes::value(std::size_t index) const {
  return pairs_[2 * index + 1];
}

struct XmlStream::Parser {
  Parser(XmlHandler& to, ReadContext& in, std::string_view as)
      : handler(to), context(in), forced_encoding(as) {}

  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  static void XMLCALL on_start(void* self, XML_Char const* name, XML_Char const** attributes);
  static void XMLCALL on_end(void* self, XML_Char const* name);
  static void XMLCALL on_characters(void* self, XML_Char const* text, int length);

  template <typename Call>
  void guarded(Call const& call);
  bool begin(bool last);
  bool parse(std::string_view bytes, bool last);
  bool parse_piece(std::string_view bytes, bool last);
  bool check_token(std::size_t fed, bool had_event);
  void report();

  XmlHandler& handler;
  ReadContext& context;
  std::string forced_encoding;
  std::string head;  ///< what came before the encoding was known
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> expat;
  std::optional<morvabs::TextDecoder> decoder;
  std::string decoded;
  std::int64_t depth = 0;
  std::uint64_t events = 0;
  std::size_t without_event = 0;  ///< bytes fed since the last event
  bool done = false;
  std::string fault;
  std::exception_ptr thrown;
};

/// Runs a handler below the parser's C frames: what it throws is carried around them.
template <typename Call>
void XmlStream::Parser::guarded(Call const& call) {
  ++events;
  if (thrown || context.ended()) {
    return;
  }
  try {
    call();
  } catch (...) {
    thrown = std::current_exception();
  }
  if (thrown || context.ended()) {
    XML_StopParser(expat.get(), XML_FALSE);
  }
}

void XMLCALL XmlStream::Parser::on_start(void* self, XML_Char const* name,
                                         XML_Char const** attributes) {
  auto& parser = *static_cast<Parser*>(self);
  parser.guarded([&] {
    if (++parser.depth > parser.context.limits().i_xml_depth) {
      parser.context.end(
          Orlec::ParseOutcome::limit_reached,
          "elements nested over " + std::to_string(parser.context.limits().i_xml_depth) + " deep");
      return;
    }
    parser.handler.start(split(name), XmlAttributes(attributes));
  });
}

void XMLCALL XmlStream::Parser::on_end(void* self, XML_Char const* name) {
  auto& parser = *static_cast<Parser*>(self);
  parser.guarded([&] {
    --parser.depth;
    parser.handler.end(split(name));
  });
}

void XMLCALL XmlStream::Parser::on_characters(void* self, XML_Char const* text, int length) {
  auto& parser = *static_cast<Parser*>(self);
  parser.guarded(
      [&] { parser.handler.characters(std::string_view(text, static_cast<std::size_t>(length))); });
}

/// Makes the parser as soon as enough of the document is there to tell its encoding.
bool XmlStream::Parser::begin(bool last) {
  constexpr std::size_t longest_declaration = 1024;
  if (!last && (head.size() < 4 ||
                (head.size() < longest_declaration && head.find('>') == std::string::npos))) {
    return false;
  }
  auto encoding = find_encoding(head);
  if (!forced_encoding.empty()) {
    encoding = {"UTF-8", forced_encoding};
  }
  if (!encoding.decoded_from.empty()) {
    decoder.emplace(encoding.decoded_from);
    if (!decoder->is_known()) {
      decoder.reset();
    }
  }
  constexpr XML_Char separator[] = {name_separator, '\0'};
  expat.reset(XML_ParserCreate_MM(encoding.parser, &noting_memory, separator));
  if (!expat) {
    throw std::bad_alloc();
  }
  // Each byte of the document may give a hundred: what is more counts once it is over the bound.
  auto const most = std::max<std::int64_t>(context.limits().i_entity_bytes, 0);
  XML_SetBillionLaughsAttackProtectionActivationThreshold(expat.get(),
                                                          static_cast<unsigned long long>(most));
  XML_SetUserData(expat.get(), this);
  XML_SetElementHandler(expat.get(), on_start, on_end);
  XML_SetCharacterDataHandler(expat.get(), on_characters);
  return true;
}

bool XmlStream::Parser::parse(std::string_view bytes, bool last) {
  if (!decoder) {
    return parse_piece(bytes, last);
  }
  decoded.clear();
  decoder->decode(bytes, last, decoded);
  return parse_piece(decoded, last);
}

bool XmlStream::Parser::parse_piece(std::string_view bytes, bool last) {
  // Pieces of moderate size: the time is looked at between them.
  constexpr std::size_t piece_size = std::size_t{64} << 10;
  do {
    auto const piece = bytes.substr(0, piece_size);
    bytes.remove_prefix(piece.size());
    bool const is_final = last && bytes.empty();
    auto const events_before = events;
    is_refused = false;
    auto const status =
        XML_Parse(expat.get(), piece.data(), static_cast<int>(piece.size()), is_final ? 1 : 0);
    if (thrown) {
      std::rethrow_exception(std::exchange(thrown, nullptr));
    }
    if (status != XML_STATUS_OK) {
      report();
      return false;
    }
    if (!context.keep_going() || !check_token(piece.size(), events != events_before)) {
      return false;
    }
  } while (!bytes.empty());
  return true;
}

/// The parser keeps a tag or comment in memory until its end is there.
bool XmlStream::Parser::check_token(std::size_t fed, bool had_event) {
  constexpr std::size_t longest_token = std::size_t{16} << 20;
  without_event = had_event ? 0 : without_event + fed;
  return without_event <= longest_token ||
         context.end(Orlec::ParseOutcome::limit_reached,
                     "an XML tag over " + std::to_string(longest_token) + " bytes");
}

void XmlStream::Parser::report() {
  auto const code = XML_GetErrorCode(expat.get());
  if (context.ended() || code == XML_ERROR_ABORTED) {
    return;
  }
  if (code == XML_ERROR_NO_MEMORY || is_refused) {
    throw std::bad_alloc();
  }
  if (code == XML_ERROR_AMPLIFICATION_LIMIT_BREACH) {
    context.end(Orlec::ParseOutcome::limit_reached,
                "the expansion of entities is over " +
                    std::to_string(context.limits().i_entity_bytes) + " bytes");
    return;
  }
  fault = "line " + std::to_string(XML_GetCurrentLineNumber(expat.get())) + ": " +
          XML_ErrorString(code);
}

XmlStream::XmlStream(XmlHandler& handler, ReadContext& context, std::string_view encoding)
    : parser_(std::make_unique<Parser>(handler, context, encoding)) {}

XmlStream::~XmlStream() = default;

bool XmlStream::feed(std::string_view bytes, bool last) {
  auto& parser = *parser_;
  if (parser.done || parser.context.ended()) {
    return false;
  }
  bool good = true;
  if (parser.expat) {
    good = parser.parse(bytes, last);
  } else {
    parser.head.append(bytes);
    if (parser.begin(last)) {
      good = parser.parse(std::exchange(parser.head, std::string()), last);
    }
  }
  parser.done = last || !good;
  return good;
}

std::string const& XmlStream::fault() const {
  return parser_->fault;
}

}  // namespace morvakit
