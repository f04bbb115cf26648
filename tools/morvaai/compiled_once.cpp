#include "compiled_once.h"

#include <fmt/format-inl.h>

template class nlohmann::basic_json<>;
template class nlohmann::basic_json<nlohmann::ordered_map>;
template class nlohmann::detail::serializer<nlohmann::json>;
template class nlohmann::detail::serializer<nlohmann::ordered_json>;

// What the headers of fmt leave to its library, which the program does without: one file less to
// load at its start.
FMT_BEGIN_NAMESPACE
namespace detail {
template auto thousands_sep_impl<char>(locale_ref) -> thousands_sep_result<char>;
template auto decimal_point_impl(locale_ref) -> char;
template auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;
template void buffer<char>::append(char const*, char const*);
template void vformat_to(buffer<char>&, string_view, basic_format_args<FMT_BUFFER_CONTEXT(char)>,
                         locale_ref);
}  // namespace detail
FMT_END_NAMESPACE
