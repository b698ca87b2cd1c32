#include "catalog/CatalogPlaces.h"

#include <optional>
#include <tuple>

#include "vocabulary/Paths.h"

namespace kelvo {
namespace {

using CatalogPlaces::Place;

std::filesystem::path joined(const std::filesystem::path& base, std::string_view relative) {
    return relative.empty() ? base : base / relative;
}

// "head/relative" split at the first slash.
std::pair<std::string_view, std::string_view> split(std::string_view alternative) {
    const std::size_t slash = alternative.find('/');
    if (slash == std::string_view::npos) return {alternative, {}};
    return {alternative.substr(0, slash), alternative.substr(slash + 1)};
}

// Every brace alternative of text, the leftmost group varying slowest.
std::vector<std::string> expanded(std::string_view text) {
    const std::size_t open = text.find('{');
    if (open == std::string_view::npos) return {std::string(text)};
    const std::size_t close = text.find('}', open);
    const auto tails = expanded(text.substr(close + 1));
    std::vector<std::string> result;
    CatalogPlaces::detail::eachPart(text.substr(open + 1, close - open - 1), ",", [&](std::string_view option) {
        for (const auto& tail : tails) result.push_back(std::string(text.substr(0, open)) + std::string(option) + tail);
        return true;
    });
    return result;
}

// The XDG base folder an "@" head names: its variable and its default under the home.
std::optional<std::pair<std::string_view, std::string_view>> xdgBase(std::string_view head) {
    if (head == "@cache") return std::pair{"XDG_CACHE_HOME", ".cache"};
    if (head == "@data") return std::pair{"XDG_DATA_HOME", ".local/share"};
    if (head == "@config") return std::pair{"XDG_CONFIG_HOME", ".config"};
    if (head == "@state") return std::pair{"XDG_STATE_HOME", ".local/state"};
    return std::nullopt;
}

std::optional<Place> resolved(std::string_view chain, const Environment& env) {
    std::vector<std::pair<std::string, std::string_view>> variables;  // name, relative
    std::string_view base;
    std::string_view relative;
    CatalogPlaces::detail::eachPart(chain, CatalogPlaces::detail::orElse, [&](std::string_view alternative) {
        std::tie(base, relative) = split(alternative);
        if (base.starts_with('$')) variables.emplace_back(base.substr(1), relative);
        return true;
    });
    std::string defaultRelative;
    if (const auto xdg = xdgBase(base)) {
        variables.emplace_back(xdg->first, relative);
        defaultRelative = joined(xdg->second, relative).string();
        base = "~";
        relative = defaultRelative;
    }
    Place place;
    if (base.starts_with('$')) {
        variables.pop_back();
        const auto value = env.locationVariable(base.substr(1));
        if (!value) return std::nullopt;
        place = {joined(*value, relative), std::string(base.substr(1))};
    } else if (base == "~") place.path = env.home / relative;
    else if (base == "@tmp") place.path = joined(env.tmpDir, relative);
    else if (base == "@flutter" && env.flutterBinCache) place.path = joined(*env.flutterBinCache, relative);
    else return std::nullopt;
    // Innermost first: each variable that is set moves the place, unless it names the
    // place the rest would give.
    for (auto variable = variables.rbegin(); variable != variables.rend(); ++variable) {
        const auto value = env.locationVariable(variable->first);
        if (!value) continue;
        auto path = joined(*value, variable->second);
        if (!Paths::same(Paths::standardized(path).string(), Paths::standardized(place.path).string()))
            place = {std::move(path), variable->first};
    }
    return place;
}

}  // namespace

std::vector<Place> CatalogPlaces::resolve(std::string_view places, const Environment& env) {
    std::vector<Place> result;
    if (places.empty()) return result;
    detail::eachPart(places, detail::separator, [&](std::string_view place) {
        if (const std::size_t cut = place.find(detail::unless); cut != std::string_view::npos) {
            if (env.locationVariable(place.substr(cut + detail::unless.size()))) return true;
            place = place.substr(0, cut);
        }
        for (const auto& chain : expanded(place))
            if (auto found = resolved(chain, env)) result.push_back(std::move(*found));
        return true;
    });
    return result;
}

std::vector<std::string> CatalogPlaces::list(std::string_view text) {
    std::vector<std::string> elements;
    if (text.empty()) return elements;
    detail::eachPart(text, detail::separator, [&](std::string_view element) {
        elements.emplace_back(element);
        return true;
    });
    return elements;
}

}  // namespace kelvo
