#pragma once
// Fake application bundles for tests: a bundle's Contents/Info.plist with chosen top-level
// members in either property-list encoding (XML or binary, written through libplist), so
// the readers are exercised on both forms an installed application may carry.
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace kelvo::testing {

enum class PlistEncoding { xml, binary };
using PlistValue = std::variant<std::string, std::int64_t>;

// Writes bundle/Contents/Info.plist (parents created) and returns the bundle's path.
std::filesystem::path writeInfoPlist(const std::filesystem::path& bundle, const std::map<std::string, PlistValue>& members,
                                     PlistEncoding encoding = PlistEncoding::xml);

struct FakeApp {
    std::optional<std::string> bundleID;    // CFBundleIdentifier, left out when absent
    std::optional<std::string> executable;  // CFBundleExecutable, left out when absent
    PlistEncoding encoding = PlistEncoding::xml;
    std::size_t payloadBytes = 20000;  // a file in Contents/Resources, so the bundle occupies space
};

// Makes folder/<name>.app and returns its path.
std::filesystem::path makeApp(const std::filesystem::path& folder, const std::string& name, const FakeApp& app = {});

}  // namespace kelvo::testing
