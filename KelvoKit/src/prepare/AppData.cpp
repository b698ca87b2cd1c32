#include "prepare/AppData.h"

#include <array>
#include <string_view>

#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

// Last pieces of identifiers that updaters, previews and cookie stores of installed
// applications use; such an identifier is a part of something else, never an orphan.
const std::set<std::string>& knownHelperSuffixes() {
    static const std::set<std::string> suffixes{"ShipIt", "Helper", "quicklook", "thumbnail", "binarycookies"};
    return suffixes;
}

struct LeftoverLocation {
    std::string_view folder;  // under home
    std::string_view suffix;  // appended to the bundle identifier
};

constexpr std::array<LeftoverLocation, 7> leftoverLocations{{
    {"Library/Application Support", ""},
    {"Library/Caches", ""},
    {"Library/Containers", ""},
    {"Library/HTTPStorages", ""},
    {"Library/Logs", ""},
    {"Library/Saved Application State", ".savedState"},
    {"Library/Preferences", ".plist"},
}};

bool startsWithAny(const std::string& text, std::initializer_list<std::string_view> prefixes) {
    for (const auto prefix : prefixes)
        if (text.starts_with(prefix)) return true;
    return false;
}

bool isASCIILetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isASCIIDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

std::vector<std::filesystem::path> AppData::leftoverPaths(const std::string& bundleID, const std::filesystem::path& home) {
    std::vector<std::filesystem::path> found;
    for (const auto& location : leftoverLocations) {
        auto candidate = home / location.folder / (bundleID + std::string(location.suffix));
        if (platform::exists(candidate)) found.push_back(std::move(candidate));
    }
    return found;
}

bool AppData::looksLikeReverseDNS(const std::string& text) {
    std::size_t pieces = 0;
    std::size_t start = 0;
    while (true) {
        const auto dot = text.find('.', start);
        const auto end = dot == std::string::npos ? text.size() : dot;
        if (end == start || !isASCIILetter(text[start])) return false;
        for (auto index = start; index < end; ++index) {
            const char character = text[index];
            if (!isASCIILetter(character) && !isASCIIDigit(character) && character != '-' && character != '_') return false;
        }
        ++pieces;
        if (dot == std::string::npos) break;
        start = dot + 1;
    }
    return pieces >= 3;
}

bool AppData::isOrphanBundleID(const std::string& bundleID, const std::set<std::string>& installed) {
    if (!looksLikeReverseDNS(bundleID)) return false;
    // The system's own data; "com.apple" without a dot also covers look-alike vendors, on purpose.
    if (startsWithAny(bundleID, {"com.apple.", "group.com.apple.", "com.apple"})) return false;
    if (bundleID.find(".com.apple.") != std::string::npos) return false;
    if (startsWithAny(bundleID, {"org.cups.", "org.python.", "org.chromium."})) return false;
    if (installed.contains(bundleID)) return false;
    // Helpers, extensions and sub-components of an installed application.
    for (const auto& installedID : installed)
        if (bundleID.starts_with(installedID + ".")) return false;
    // Tool chains and updaters that live on without an application bundle of their own.
    if (startsWithAny(bundleID, {"org.swift.", "com.android.", "com.google.GoogleUpdater", "com.google.Keystone",
                                 "com.google.SoftwareUpdate", "com.microsoft.autoupdate"}))
        return false;
    // Vendors whose one installed application keeps data under other product names.
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 1> vendorFamilies{{
        {"com.google.Chrome", "com.google."},
    }};
    for (const auto& [application, prefix] : vendorFamilies)
        if (installed.contains(std::string(application)) && bundleID.starts_with(prefix)) return false;
    // Reverse-DNS shaped by now, so the last piece follows the last dot and is not empty.
    return !knownHelperSuffixes().contains(bundleID.substr(bundleID.rfind('.') + 1));
}

}  // namespace kelvo
