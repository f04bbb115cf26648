#pragma once

// What nearly every file of the program and its tests needs of other libraries. It is parsed once,
// as a precompiled header, and the templates that all of them would fill in again are compiled
// once, in compiled_once.cpp: that halves the time that the program takes to compile. Files include
// what they use, as if this were not there.

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

extern template class nlohmann::basic_json<>;
extern template class nlohmann::basic_json<nlohmann::ordered_map>;
extern template class nlohmann::detail::serializer<nlohmann::json>;
extern template class nlohmann::detail::serializer<nlohmann::ordered_json>;
