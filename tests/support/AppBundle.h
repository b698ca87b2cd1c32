#pragma once
// Fake application bundles for tests: a bundle's Contents/Info.plist with its name, id and
// executable in either property-list encoding (XML or binary, written through libplist), so
// the readers are exercised on both forms an installed application may carry.
#include <filesystem>
#include <optional>
#include <string>

namespace kelvo::testing {

enum class PlistEncoding { xml, binary };

struct FakeApp {
    std::optional<std::string> bundleID;    // CFBundleIdentifier, left out when absent
    std::optional<std::string> executable;  // CFBundleExecutable, left out when absent
    PlistEncoding encoding = PlistEncoding::xml;
    std::size_t payloadBytes = 20000;  // a file in Contents/Resources, so the bundle occupies space
};

// Makes folder/<name>.app and returns its path.
std::filesystem::path makeApp(const std::filesystem::path& folder, const std::string& name, const FakeApp& app = {});

}  // namespace kelvo::testing
