#pragma once
// The one JSON layout the library writes (configuration file, scan plan): keys sorted,
// two-space indentation, " : " between key and value, one member or element per line,
// every "/" escaped as "\/", empty containers as an opening and closing bracket around
// an empty line. Invalid UTF-8 in strings is written as U+FFFD.
#include <nlohmann/json.hpp>
#include <string>

namespace kelvo::JsonLayout {

std::string pretty(const nlohmann::json& value);

}  // namespace kelvo::JsonLayout
