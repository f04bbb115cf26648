#include "morvakit/xml/part_path.h"

#include <algorithm>

namespace morvakit {

namespace {

int hexadecimal(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  char const lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string decode_percent(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    int const high = text[i] == '%' && i + 2 < text.size() ? hexadecimal(text[i + 1]) : -1;
    int const low = high >= 0 ? hexadecimal(text[i + 2]) : -1;
    if (low >= 0) {
      result += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string resolve_part(std::string_view source, std::string_view target) {
  std::string path;
  if (target.empty() || target.front() != '/') {
    auto const slash = source.rfind('/');
    path = slash == std::string_view::npos ? std::string() : std::string(source.substr(0, slash));
  }
  auto const decoded = decode_percent(target.substr(0, target.find('#')));
  std::string_view rest = decoded;
  while (!rest.empty()) {
    auto const slash = std::min(rest.find_first_of("/\\"), rest.size());
    auto const piece = rest.substr(0, slash);
    rest.remove_prefix(std::min(slash + 1, rest.size()));
    if (piece == "..") {
      auto const cut = path.rfind('/');
      path.resize(cut == std::string::npos ? 0 : cut);
    } else if (!piece.empty() && piece != ".") {
      path += path.empty() ? "" : "/";
      path += piece;
    }
  }
  return path;
}

}  // namespace morvakit
