#include "kelvo/Family.h"

#include <algorithm>
#include <utility>

#include "kelvo/L10n.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

struct FamilyRow {
    Family family;
    std::string_view raw;
    std::string_view icon;
};

constexpr std::array<FamilyRow, 20> rows{{
    {Family::xcodeCore, "xcodeCore", "hammer"},
    {Family::simulators, "simulators", "iphone"},
    {Family::cocoapods, "cocoapods", "shippingbox"},
    {Family::flutterDart, "flutterDart", "bird"},
    {Family::androidGradle, "androidGradle", "cube"},
    {Family::jsPackages, "jsPackages", "cube.box"},
    {Family::devMisc, "devMisc", "wrench.and.screwdriver"},
    {Family::perProject, "perProject", "folder"},
    {Family::general, "macosGeneral", "internaldrive"},
    {Family::docker, "docker", "shippingbox.fill"},
    {Family::appLeftovers, "appLeftovers", "trash"},
    {Family::unusedApps, "unusedApps", "app.dashed"},
    {Family::dotNet, "dotNet", "cube.transparent"},
    {Family::reactNative, "reactNative", "atom"},
    {Family::webBuild, "webBuild", "globe"},
    {Family::jvm, "jvm", "cup.and.saucer"},
    {Family::python, "python", "terminal"},
    {Family::gameEngines, "gameEngines", "gamecontroller"},
    {Family::otherLangs, "otherLangs", "curlybraces"},
    {Family::oldRuntimes, "oldRuntimes", "clock.arrow.circlepath"},
}};

const FamilyRow& rowOf(Family family) { return rows[static_cast<std::size_t>(family)]; }

// Words a user may type, in the order they are tried.
constexpr std::pair<std::string_view, Family> aliases[] = {
    {"xcode", Family::xcodeCore},       {"gradle", Family::androidGradle},  {"flutter", Family::flutterDart},
    {"js", Family::jsPackages},         {"projects", Family::perProject},   {"macos", Family::general},
    {"simulators", Family::simulators}, {"cocoapods", Family::cocoapods},   {"docker", Family::docker},
    {"devmisc", Family::devMisc},       {"leftovers", Family::appLeftovers}, {"apps", Family::unusedApps},
    {"dotnet", Family::dotNet},         {".net", Family::dotNet},           {"rn", Family::reactNative},
    {"reactnative", Family::reactNative}, {"web", Family::webBuild},        {"jvm", Family::jvm},
    {"scala", Family::jvm},             {"kotlin", Family::jvm},            {"python", Family::python},
    {"py", Family::python},             {"games", Family::gameEngines},     {"unity", Family::gameEngines},
    {"unreal", Family::gameEngines},    {"langs", Family::otherLangs},      {"general", Family::general},
    {"runtimes", Family::oldRuntimes},
};

}  // namespace

const std::array<Family, 20>& allFamilies() {
    static const std::array<Family, 20> families = [] {
        std::array<Family, 20> result{};
        for (std::size_t i = 0; i < rows.size(); ++i) result[i] = rows[i].family;
        return result;
    }();
    return families;
}

const std::vector<Family>& cleanDomainFamilies() {
    static const std::vector<Family> families = [] {
        std::vector<Family> result;
        for (Family family : allFamilies())
            if (family != Family::appLeftovers && family != Family::unusedApps && family != Family::oldRuntimes)
                result.push_back(family);
        return result;
    }();
    return families;
}

std::string_view rawValue(Family family) { return rowOf(family).raw; }

std::optional<Family> familyFromRawValue(std::string_view raw) {
    for (const auto& row : rows)
        if (row.raw == raw) return row.family;
    return std::nullopt;
}

std::optional<Family> familyFromAlias(std::string_view name) {
    const std::string lowered = platform::lowercased(name);
    for (const auto& [word, family] : aliases)
        if (word == lowered) return family;
    return std::nullopt;
}

std::optional<Family> familyFromUserName(std::string_view name) {
    if (auto family = familyFromAlias(name)) return family;
    return familyFromRawValue(name);
}

std::vector<std::string> acceptedFamilyNames() {
    std::vector<std::string> names;
    for (const auto& alias : aliases) names.emplace_back(alias.first);
    for (const auto& row : rows)
        if (std::find(names.begin(), names.end(), row.raw) == names.end()) names.emplace_back(row.raw);
    return names;
}

std::vector<std::string> acceptedFamilyNames(const std::vector<Family>& among) {
    std::vector<std::string> names;
    for (auto& name : acceptedFamilyNames())
        if (const auto family = familyFromUserName(name); family && std::ranges::find(among, *family) != among.end())
            names.push_back(std::move(name));
    return names;
}

std::string displayName(Family family) { return L10n::t("family." + std::string(rawValue(family))); }

std::string displayName(Family family, CatalogProfile profile) {
    const std::string key = "family." + std::string(rawValue(profile)) + "." + std::string(rawValue(family));
    std::string text = L10n::t(key);
    return text != key ? text : displayName(family);
}

bool trashedByDefault(Family family) { return family == Family::appLeftovers; }

std::string_view iconName(Family family) { return rowOf(family).icon; }

const std::vector<std::string>& guardedProcesses(Family family) {
    static const std::vector<std::string> none;
    static const std::vector<std::string> xcode{"Xcode"};
    static const std::vector<std::string> simulators{"Xcode", "Simulator"};
    static const std::vector<std::string> flutter{"dart"};
    static const std::vector<std::string> android{"studio", "qemu-system-x86_64", "qemu-system-aarch64", "java"};
    static const std::vector<std::string> docker{"Docker", "com.docker.backend"};
    static const std::vector<std::string> games{"Unity", "UnrealEditor"};
    switch (family) {
        case Family::xcodeCore: return xcode;
        case Family::simulators: return simulators;
        case Family::flutterDart: return flutter;
        case Family::androidGradle: return android;
        case Family::docker: return docker;
        case Family::gameEngines: return games;
        default: return none;
    }
}

}  // namespace kelvo
