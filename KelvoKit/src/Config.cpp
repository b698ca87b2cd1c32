#include "kelvo/Config.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "JsonLayout.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

std::optional<std::vector<std::string>> stringList(const nlohmann::json& value) {
    if (!value.is_array()) return std::nullopt;
    std::vector<std::string> list;
    for (const auto& element : value) {
        if (!element.is_string()) return std::nullopt;
        list.push_back(element.get<std::string>());
    }
    return list;
}

}  // namespace

const Config& Config::defaults() {
    static const Config config;
    return config;
}

std::filesystem::path Config::filePath(const std::filesystem::path& home) { return home / ".config/kelvo/config.json"; }

bool Config::exists(const std::filesystem::path& home) { return platform::exists(filePath(home)); }

std::optional<Config> Config::decode(const std::string& text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto roots = json.find("projectRoots");
    const auto exclusions = json.find("extraExclusions");
    const auto level = json.find("defaultLevel");
    const auto keepRecent = json.find("keepRecentDays");
    if (roots == json.end() || exclusions == json.end() || level == json.end() || keepRecent == json.end())
        return std::nullopt;
    Config config;
    auto rootList = stringList(*roots);
    auto exclusionList = stringList(*exclusions);
    if (!rootList || !exclusionList || !level->is_string() || !keepRecent->is_number_integer()) return std::nullopt;
    // A count beyond the signed 64-bit range does not fit the field: the file is invalid.
    if (keepRecent->is_number_unsigned() &&
        keepRecent->get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return std::nullopt;
    config.projectRoots = std::move(*rootList);
    config.extraExclusions = std::move(*exclusionList);
    config.defaultLevel = level->get<std::string>();
    config.keepRecentDays = keepRecent->get<std::int64_t>();
    if (const auto families = json.find("enabledFamilies"); families != json.end() && !families->is_null()) {
        auto familyList = stringList(*families);
        if (!familyList) return std::nullopt;
        config.enabledFamilies = std::move(*familyList);
    }
    return config;
}

Config Config::load(const std::filesystem::path& home) {
    const auto text = platform::readFile(filePath(home));
    if (!text) return defaults();
    return decode(*text).value_or(defaults());
}

std::string Config::encoded() const {
    nlohmann::json json = {
        {"projectRoots", projectRoots},
        {"extraExclusions", extraExclusions},
        {"defaultLevel", defaultLevel},
        {"keepRecentDays", keepRecentDays},
    };
    if (enabledFamilies) json["enabledFamilies"] = *enabledFamilies;
    return JsonLayout::pretty(json);
}

std::error_code Config::save(const std::filesystem::path& home) const {
    const auto path = filePath(home);
    if (auto error = platform::createDirectories(path.parent_path())) return error;
    return platform::writeFile(path, encoded());
}

}  // namespace kelvo
