#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "morvaai.h"

namespace tool {

/// What stands in a template where the data go.
inline constexpr std::string_view report_data_mark = "@REPORT_DATA@";

/// The data as they may stand in a script element of a page: JSON in ASCII, without a character
/// that means anything to HTML.
std::string script_text(nlohmann::ordered_json const& data);

/// The template with the data in place of the mark; empty for a template without one.
std::string fill_template(std::string_view page, nlohmann::ordered_json const& data);

/// Why no report can be written anywhere: this program was built without.
std::optional<std::string> refuse_any_report();

/// Why no report can be written beside other output there, as far as that can be told before there
/// is one: none can be written anywhere, the folder is missing or not writable, what is there is no
/// file and no link to one, it is `-`.
std::optional<std::string> refuse_report(HString const& path);

/// Writes a report to the file, which is replaced as a whole; or tells why that failed. No signal
/// leaves a part of it.
std::optional<std::string> write_report(HString const& path, nlohmann::ordered_json const& data);

/// Writes a report to standard output; false, after a line that says why, where that failed.
bool print_report(nlohmann::ordered_json const& data);

}  // namespace tool
