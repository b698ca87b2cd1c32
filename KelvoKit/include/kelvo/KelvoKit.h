#pragma once
// Facts about the library itself.
#include <string_view>

namespace kelvo::KelvoKit {

// The library's version ("0.1.0"), the one the build declares for the project.
std::string_view version();
// The application's reverse-DNS identifier: the name its desktop entry and its stored
// credentials go by.
std::string_view applicationID();

}  // namespace kelvo::KelvoKit
