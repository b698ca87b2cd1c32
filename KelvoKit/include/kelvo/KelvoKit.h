#pragma once
// Facts about the library itself.
#include <string_view>

namespace kelvo::KelvoKit {

// The library's version ("0.1.0"), the one the build declares for the project.
std::string_view version();

}  // namespace kelvo::KelvoKit
