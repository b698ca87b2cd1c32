#include "kelvo/Config.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "vocabulary/JsonLayout.h"
#include "kelvo/L10n.h"
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

Config::Loaded Config::decode(const std::string& text) {
    using Kind = ConfigProblem::Kind;
    using Expected = ConfigProblem::Expected;
    const auto defaultsBecause = [](Kind kind, std::string key = {}, Expected expected = Expected::nothing) {
        return Loaded{defaults(), ConfigProblem{kind, {}, std::move(key), expected}};
    };
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) return defaultsBecause(Kind::empty);
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        // The parser reads one past the last byte when the text ends too early.
        return defaultsBecause(error.byte > text.size() ? Kind::truncated : Kind::notJSON);
    }
    if (!json.is_object()) return defaultsBecause(Kind::notAnObject);
    // The required keys in a fixed order, so one file always names the same key first.
    for (const char* key : {"projectRoots", "extraExclusions", "defaultLevel", "keepRecentDays"})
        if (!json.contains(key)) return defaultsBecause(Kind::missingKey, key);
    Config config;
    auto rootList = stringList(json.at("projectRoots"));
    if (!rootList) return defaultsBecause(Kind::wrongType, "projectRoots", Expected::textList);
    auto exclusionList = stringList(json.at("extraExclusions"));
    if (!exclusionList) return defaultsBecause(Kind::wrongType, "extraExclusions", Expected::textList);
    if (!json.at("defaultLevel").is_string()) return defaultsBecause(Kind::wrongType, "defaultLevel", Expected::text);
    const auto days = wholeNumber(json.at("keepRecentDays"));
    if (!days) return defaultsBecause(Kind::wrongType, "keepRecentDays", Expected::wholeNumber);
    config.projectRoots = std::move(*rootList);
    config.extraExclusions = std::move(*exclusionList);
    config.defaultLevel = json.at("defaultLevel").get<std::string>();
    config.keepRecentDays = *days;
    if (const auto families = json.find("enabledFamilies"); families != json.end() && !families->is_null()) {
        auto familyList = stringList(*families);
        if (!familyList) return defaultsBecause(Kind::wrongType, "enabledFamilies", Expected::textListOrNull);
        config.enabledFamilies = std::move(*familyList);
    }
    if (const auto check = json.find("checkMinimumVersion"); check != json.end()) {
        if (!check->is_boolean()) return defaultsBecause(Kind::wrongType, "checkMinimumVersion", Expected::trueOrFalse);
        config.checkMinimumVersion = check->get<bool>();
    }
    if (const auto trash = json.find("moveToTrash"); trash != json.end()) {
        if (!trash->is_boolean()) return defaultsBecause(Kind::wrongType, "moveToTrash", Expected::trueOrFalse);
        config.moveToTrash = trash->get<bool>();
    }
    return {std::move(config), std::nullopt};
}

Config::Loaded Config::load(const std::filesystem::path& home) {
    const auto path = filePath(home);
    const auto text = platform::readRegularFile(path, maximumFileBytes);
    if (!text) {
        // Absent is the usual case; anything standing there that cannot be read is not.
        if (platform::isPresent(path) == false) return {defaults(), std::nullopt};
        return {defaults(), ConfigProblem{ConfigProblem::Kind::unreadable, path, {}, ConfigProblem::Expected::nothing}};
    }
    auto loaded = decode(*text);
    if (loaded.problem) loaded.problem->file = path;
    return loaded;
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
    if (moveToTrash) json["moveToTrash"] = *moveToTrash;
    return JsonLayout::pretty(json);
}

std::error_code Config::save(const std::filesystem::path& home) const {
    const auto path = filePath(home);
    if (auto error = platform::createDirectories(path.parent_path())) return error;
    return platform::writeFileAtomically(path, encoded());
}

std::string Config::saveFailureText(const std::filesystem::path& home, std::error_code error) {
    const std::string reason =
        error == platform::notRegularFileError() ? L10n::t("config.save.notRegularFile") : error.message();
    return L10n::t("config.save.failed", filePath(home).string(), reason);
}

}  // namespace kelvo
