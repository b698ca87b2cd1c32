#pragma once
// Which system's catalog a run uses: where the tools keep their data differs between macOS
// (~/Library) and Linux (the XDG folders), so the clean catalog, the per-project rows and
// the prepare detectors come in one profile per system. Chosen once, when the environment
// is built; the running system's profile unless the user asks for the other one.
#include <optional>
#include <string_view>

namespace kelvo {

enum class CatalogProfile { macos, linux };

// "macos", "linux": the form typed on the command line.
std::string_view rawValue(CatalogProfile profile);
std::optional<CatalogProfile> catalogProfileFromRawValue(std::string_view raw);

constexpr CatalogProfile runningSystemProfile() {
#ifdef __APPLE__
    return CatalogProfile::macos;
#else
    return CatalogProfile::linux;
#endif
}

}  // namespace kelvo
