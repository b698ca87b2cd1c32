#include "kelvo/CatalogProfile.h"

namespace kelvo {

std::string_view rawValue(CatalogProfile profile) { return profile == CatalogProfile::macos ? "macos" : "linux"; }

std::optional<CatalogProfile> catalogProfileFromRawValue(std::string_view raw) {
    for (CatalogProfile profile : {CatalogProfile::macos, CatalogProfile::gnuLinux})
        if (rawValue(profile) == raw) return profile;
    return std::nullopt;
}

}  // namespace kelvo
