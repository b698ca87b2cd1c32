#include "safety/ProtectedApps.h"

#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

std::string lastNonEmptyPiece(const std::string& text) {
    const auto end = text.find_last_not_of('.');
    if (end == std::string::npos) return "";
    const auto dot = text.rfind('.', end);
    const auto start = dot == std::string::npos ? 0 : dot + 1;
    return text.substr(start, end + 1 - start);
}

}  // namespace

ProtectedApps::ProtectedApps(std::set<std::string> bundleIDs, std::set<std::string> names)
    : bundleIDs_(std::move(bundleIDs)), names_(std::move(names)) {
    for (const auto& bundleID : bundleIDs_)
        if (auto prefix = brandPrefix(bundleID)) brandPrefixes_.insert(std::move(*prefix));
}

const ProtectedApps& ProtectedApps::standard() {
    static const ProtectedApps apps{
        {
            "com.apple.dt.Xcode", "com.google.android.studio", "com.microsoft.VSCode", "com.docker.docker",
            "com.googlecode.iterm2", "com.apple.Terminal", "com.google.Chrome", "com.apple.Safari",
            "org.mozilla.firefox", "company.thebrowser.Browser", "com.apple.iphonesimulator",
        },
        {
            "xcode", "android studio", "visual studio code", "code", "cursor", "docker", "iterm",
            "terminal", "google chrome", "safari", "firefox", "arc", "simulator", "kelvo",
        },
    };
    return apps;
}

std::optional<std::string> ProtectedApps::brandPrefix(const std::string& text) {
    const auto firstDot = text.find('.');
    if (firstDot == std::string::npos || firstDot == 0) return std::nullopt;
    const auto secondDot = text.find('.', firstDot + 1);
    const auto second = text.substr(firstDot + 1, secondDot == std::string::npos ? std::string::npos : secondDot - firstDot - 1);
    if (second.empty()) return std::nullopt;
    return text.substr(0, firstDot) + "." + second;
}

bool ProtectedApps::coversBundleID(const std::string& bundleID) const {
    if (bundleIDs_.contains(bundleID)) return true;
    for (const auto& id : bundleIDs_)
        if (bundleID.starts_with(id + ".")) return true;
    if (const auto prefix = brandPrefix(bundleID); prefix && brandPrefixes_.contains(*prefix)) return true;
    const std::string last = lastNonEmptyPiece(bundleID);
    return !last.empty() && coversName(last);
}

bool ProtectedApps::coversName(const std::string& name) const {
    return names_.contains(platform::lowercased(name));
}

}  // namespace kelvo
