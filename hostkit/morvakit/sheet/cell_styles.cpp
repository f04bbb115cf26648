#include "morvakit/sheet/cell_styles.h"

namespace morvakit {

namespace {

constexpr std::size_t about_one_entry = 64;

}  // namespace

void CellStyles::add_format(int number, std::string_view code) {
  if (context_.charge_memory(about_one_entry)) {
    formats_[number] = kind_of_format(code);
  }
}

void CellStyles::add_style(int format) {
  if (!context_.charge_memory(about_one_entry)) {
    return;
  }
  auto const found = formats_.find(format);
  styles_.push_back(found != formats_.end() ? found->second : kind_of_builtin_format(format));
}

NumberKind CellStyles::kind(std::uint32_t style) const {
  return style < styles_.size() ? styles_[style] : NumberKind::number;
}

std::string CellStyles::text(std::string_view stored, std::uint32_t style) const {
  return format_number(stored, kind(style), from_1904_);
}

std::string CellStyles::text(double value, std::uint32_t style) const {
  return format_number(value, kind(style), from_1904_);
}

}  // namespace morvakit
