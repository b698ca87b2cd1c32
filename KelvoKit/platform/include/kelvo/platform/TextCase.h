#pragma once
// Unicode lower-casing of UTF-8 text, independent of the process's own locale setting.
// Invalid UTF-8 bytes are kept as they are.
#include <string>
#include <string_view>

namespace kelvo::platform {

std::string lowercased(std::string_view text);

}  // namespace kelvo::platform
