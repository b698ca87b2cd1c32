#include "kelvo/PrepareRegistry.h"

#include "kelvo/CleanerRegistry.h"
#include "kelvo/Environment.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

std::vector<std::string> splitDroppingEmpty(const std::string& text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (start <= text.size()) {
        const auto dot = text.find('.', start);
        const auto end = dot == std::string::npos ? text.size() : dot;
        if (end > start) pieces.push_back(text.substr(start, end - start));
        if (dot == std::string::npos) break;
        start = dot + 1;
    }
    return pieces;
}

const std::set<std::string>& protectedBrandPrefixes() {
    static const std::set<std::string> prefixes = [] {
        std::set<std::string> result;
        for (const auto& id : PrepareRegistry::protectedBundleIDs())
            if (auto prefix = PrepareRegistry::brandPrefix(id)) result.insert(*prefix);
        return result;
    }();
    return prefixes;
}

}  // namespace

const std::set<std::string>& PrepareRegistry::protectedBundleIDs() {
    static const std::set<std::string> ids{
        "com.apple.dt.Xcode",  "com.google.android.studio", "com.microsoft.VSCode",      "com.docker.docker",
        "com.googlecode.iterm2", "com.apple.Terminal",      "com.google.Chrome",         "com.apple.Safari",
        "org.mozilla.firefox", "company.thebrowser.Browser", "com.apple.iphonesimulator",
    };
    return ids;
}

const std::set<std::string>& PrepareRegistry::protectedNames() {
    static const std::set<std::string> names{
        "xcode", "android studio", "visual studio code", "code",  "cursor",    "docker",    "iterm",
        "terminal", "google chrome", "safari",           "firefox", "arc",     "simulator", "kelvo",
    };
    return names;
}

std::optional<std::string> PrepareRegistry::brandPrefix(const std::string& text) {
    const auto firstDot = text.find('.');
    if (firstDot == std::string::npos || firstDot == 0) return std::nullopt;
    const auto secondDot = text.find('.', firstDot + 1);
    const auto second = text.substr(firstDot + 1, secondDot == std::string::npos ? std::string::npos : secondDot - firstDot - 1);
    if (second.empty()) return std::nullopt;
    return text.substr(0, firstDot) + "." + second;
}

bool PrepareRegistry::isProtectedBundleID(const std::string& bundleID) {
    const auto& ids = protectedBundleIDs();
    if (ids.contains(bundleID)) return true;
    for (const auto& id : ids)
        if (bundleID.starts_with(id + ".")) return true;
    if (const auto prefix = brandPrefix(bundleID); prefix && protectedBrandPrefixes().contains(*prefix)) return true;
    const auto pieces = splitDroppingEmpty(bundleID);
    return !pieces.empty() && protectedNames().contains(platform::lowercased(pieces.back()));
}

bool PrepareRegistry::isProtectedName(const std::string& name) {
    return protectedNames().contains(platform::lowercased(name));
}

std::vector<std::filesystem::path> PrepareRegistry::userAppDirs(const Environment& env) {
    return {"/Applications", env.home / "Applications"};
}

std::vector<std::filesystem::path> PrepareRegistry::prepareProtectedPaths(const Environment& env) {
    return CleanerRegistry::protectedPaths(env);
}

}  // namespace kelvo
