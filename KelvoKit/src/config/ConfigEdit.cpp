#include "kelvo/ConfigEdit.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "kelvo/Environment.h"
#include "kelvo/L10n.h"
#include "kelvo/RiskAxes.h"
#include "vocabulary/Text.h"

namespace kelvo {
namespace {

using Code = ConfigEdit::Refusal::Code;

ConfigEdit::Outcome refused(const Config& config, Code code, std::string key, std::string value,
                            std::vector<std::string> choices = {}) {
    return {config, ConfigEdit::Refusal{code, std::move(key), std::move(value), std::move(choices)}, false};
}

// The list a path action works on, and the key that names it.
std::vector<std::string>& listOf(Config& config, ConfigEdit::Action action, std::string& key) {
    const bool roots = action == ConfigEdit::Action::addRoot || action == ConfigEdit::Action::removeRoot;
    key = roots ? "projectRoots" : "extraExclusions";
    return roots ? config.projectRoots : config.extraExclusions;
}

}  // namespace

std::string ConfigEdit::Refusal::text() const {
    switch (code) {
        case Code::badPath: return L10n::t("config.edit.badPath", key, value);
        case Code::notListed: return L10n::t("config.edit.notListed", key, value);
        case Code::unknownKey: return L10n::t("config.edit.unknownKey", key, joined(choices));
        case Code::invalidValue: break;
    }
    std::string accepted;
    if (key == "keepRecentDays")
        accepted = L10n::t("config.edit.accepts.days", Config::fewestKeepRecentDays, Config::mostKeepRecentDays);
    else if (key == "enabledFamilies") accepted = L10n::t("config.edit.accepts.families", joined(choices));
    else if (key == "checkMinimumVersion") accepted = L10n::t("cli.config.expected.trueOrFalse");
    else accepted = L10n::t("config.edit.accepts.oneOf", joined(choices));
    return L10n::t("config.edit.invalid", key, value, accepted);
}

const std::vector<std::string>& ConfigEdit::settableKeys() {
    static const std::vector<std::string> keys{"keepRecentDays", "defaultLevel", "enabledFamilies", "checkMinimumVersion",
                                               "moveToTrash"};
    return keys;
}

ConfigEdit::Outcome ConfigEdit::applyTo(const Config& config, const std::vector<Family>& offeredFamilies) const {
    Config result = config;
    if (action != Action::set) {
        std::string listKey;
        auto& list = listOf(result, action, listKey);
        // Stored as typed, as the settings' path fields store it; expanded when a run starts.
        const std::string path = trimmed(value, " \t");
        if (!Environment::expand(path, "/home")) return refused(config, Code::badPath, listKey, value);
        const bool adding = action == Action::addRoot || action == Action::exclude;
        const bool listed = std::ranges::find(list, path) != list.end();
        if (adding && listed) return {config, std::nullopt, false};
        if (!adding && !listed) return refused(config, Code::notListed, listKey, path);
        if (adding) list.push_back(path);
        else std::erase(list, path);
        return {std::move(result), std::nullopt, true};
    }

    const std::string text = trimmed(value, " \t\r\n");
    if (key == "keepRecentDays") {
        std::int64_t days = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), days);
        if (text.empty() || error != std::errc{} || end != text.data() + text.size() ||
            days < Config::fewestKeepRecentDays || days > Config::mostKeepRecentDays)
            return refused(config, Code::invalidValue, key, value);
        result.keepRecentDays = days;
    } else if (key == "defaultLevel") {
        if (!levelFromRawValue(text)) {
            std::vector<std::string> levels;
            for (Level level : {Level::safe, Level::moderate, Level::aggressive}) levels.emplace_back(rawValue(level));
            return refused(config, Code::invalidValue, key, value, std::move(levels));
        }
        result.defaultLevel = text;
    } else if (key == "enabledFamilies") {
        if (text == "all") {
            result.enabledFamilies.reset();
        } else {
            std::set<std::string> raw;
            std::string rest = text;
            for (char& c : rest)
                if (c == ',') c = ' ';
            std::size_t at = 0;
            while ((at = rest.find_first_not_of(' ', at)) != std::string::npos) {
                const auto end = std::min(rest.find(' ', at), rest.size());
                const auto family = familyFromUserName(rest.substr(at, end - at));
                if (!family || std::ranges::find(offeredFamilies, *family) == offeredFamilies.end())
                    return refused(config, Code::invalidValue, key, value, acceptedFamilyNames(offeredFamilies));
                raw.emplace(rawValue(*family));
                at = end;
            }
            if (raw.empty() && text != "none")
                return refused(config, Code::invalidValue, key, value, acceptedFamilyNames(offeredFamilies));
            result.enabledFamilies = std::vector<std::string>(raw.begin(), raw.end());
        }
    } else if (key == "checkMinimumVersion") {
        if (text != "true" && text != "false")
            return refused(config, Code::invalidValue, key, value);
        result.checkMinimumVersion = text == "true";
    } else if (key == "moveToTrash") {
        // "default": the key left out, so each family's own default applies.
        if (text != "true" && text != "false" && text != "default")
            return refused(config, Code::invalidValue, key, value, {"true", "false", "default"});
        result.moveToTrash = text == "default" ? std::nullopt : std::optional(text == "true");
    } else {
        return refused(config, Code::unknownKey, key, value, settableKeys());
    }
    const bool changed = !(result == config);
    return {std::move(result), std::nullopt, changed};
}

}  // namespace kelvo
