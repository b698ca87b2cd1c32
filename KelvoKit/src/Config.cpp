#include "kelvo/Config.h"

#include <cmath>
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

// A JSON number with an integral value inside the signed 64-bit range, however it is
// written: 7, 7.0 and 1e1 are whole numbers, 7.5 and "7" are not.
std::optional<std::int64_t> wholeNumber(const nlohmann::json& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (!value.is_number_float()) return std::nullopt;
    const double number = value.get<double>();
    // -2^63 is exact in a double and fits; 2^63 is the first value that does not.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(number) || std::trunc(number) != number || number < -limit || number >= limit)
        return std::nullopt;
    return static_cast<std::int64_t>(number);
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
    const auto days = wholeNumber(*keepRecent);
    if (!rootList || !exclusionList || !level->is_string() || !days) return std::nullopt;
    config.projectRoots = std::move(*rootList);
    config.extraExclusions = std::move(*exclusionList);
    config.defaultLevel = level->get<std::string>();
    config.keepRecentDays = *days;
    if (const auto families = json.find("enabledFamilies"); families != json.end() && !families->is_null()) {
        auto familyList = stringList(*families);
        if (!familyList) return std::nullopt;
        config.enabledFamilies = std::move(*familyList);
    }
    if (const auto check = json.find("checkMinimumVersion"); check != json.end()) {
        if (!check->is_boolean()) return std::nullopt;
        config.checkMinimumVersion = check->get<bool>();
    }
    return config;
}

Config Config::load(const std::filesystem::path& home) {
    const auto text = platform::readRegularFile(filePath(home), maximumFileBytes);
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
    if (!checkMinimumVersion) json["checkMinimumVersion"] = false;
    return JsonLayout::pretty(json);
}

std::error_code Config::save(const std::filesystem::path& home) const {
    const auto path = filePath(home);
    if (auto error = platform::createDirectories(path.parent_path())) return error;
    return platform::writeFile(path, encoded());
}

}  // namespace kelvo
