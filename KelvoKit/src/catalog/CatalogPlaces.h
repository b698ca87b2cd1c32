#pragma once
// Private to the library: the one way the catalog's places are found, for every profile.
// Reads the place notation of CatalogTable and resolves it the way the tools resolve
// their folders: the tool's own variable first, then the XDG base folder, then the
// default under the home. wellFormed is constexpr so that the table is checked when the
// library is built.
#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/Environment.h"

namespace kelvo::CatalogPlaces {

// A folder of the catalog, and the location variable that put it there (empty: none did).
struct Place {
    std::filesystem::path path;
    std::string variable;
};

// The places of a placement in their order, brace alternatives expanded. A place based
// on the Flutter SDK when none is known, one a set variable replaces, or one that only an
// unset variable names is left out.
std::vector<Place> resolve(std::string_view places, const Environment& env);
// The elements of a "; "-separated list (marks, prefixes); none for empty text.
std::vector<std::string> list(std::string_view text);

namespace detail {

inline constexpr std::string_view separator = "; ";
inline constexpr std::string_view orElse = " > ";
inline constexpr std::string_view unless = " unless $";
inline constexpr std::array<std::string_view, 7> bases{"~", "@cache", "@data", "@config", "@state", "@tmp", "@flutter"};

// Calls part(piece) for each piece of text between separators; false as soon as one does.
template <typename Part>
constexpr bool eachPart(std::string_view text, std::string_view separator, Part&& part) {
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        if (!part(text.substr(start, end == std::string_view::npos ? end : end - start))) return false;
        if (end == std::string_view::npos) return true;
        start = end + separator.size();
    }
}

constexpr bool isVariableName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    });
}

// "$VAR", "$VAR/rel" anywhere; a base ("~/rel", "@cache/rel", "@tmp") as the last only.
// A relative part neither starts nor ends with a slash, and the home itself ("~" alone) is
// never a place.
constexpr bool wellFormedAlternative(std::string_view alternative, bool last) {
    const std::size_t slash = std::min(alternative.find('/'), alternative.size());
    const std::string_view head = alternative.substr(0, slash);
    const std::string_view relative = alternative.substr(std::min(slash + 1, alternative.size()));
    if (slash < alternative.size() && (relative.empty() || relative.back() == '/' || relative.front() == '/'))
        return false;
    if (alternative.find_first_of(";>$", 1) != std::string_view::npos) return false;
    if (head.starts_with('$')) return isVariableName(head.substr(1));
    if (head == "~" && relative.empty()) return false;
    return last && std::find(bases.begin(), bases.end(), head) != bases.end();
}

// Brace groups are closed, not nested, and hold at least two alternatives.
constexpr bool wellFormedBraces(std::string_view place) {
    bool open = false;
    bool alternatives = false;
    for (char c : place) {
        if (c == '{') {
            if (open) return false;
            open = true;
            alternatives = false;
        } else if (c == '}') {
            if (!open || !alternatives) return false;
            open = false;
        } else if (c == ',') {
            if (!open) return false;
            alternatives = true;
        }
    }
    return !open;
}

constexpr bool wellFormedPlace(std::string_view place) {
    const std::size_t cut = place.find(unless);
    if (cut != std::string_view::npos) {
        if (!isVariableName(place.substr(cut + unless.size()))) return false;
        place = place.substr(0, cut);
    }
    if (place.empty() || !wellFormedBraces(place)) return false;
    std::size_t remaining = 1;
    for (std::size_t at = place.find(orElse); at != std::string_view::npos; at = place.find(orElse, at + 1))
        ++remaining;
    return eachPart(place, orElse,
                    [&](std::string_view alternative) { return wellFormedAlternative(alternative, --remaining == 0); });
}

}  // namespace detail

// True when text is a "; "-separated list of well-formed places; empty text is none.
constexpr bool wellFormed(std::string_view places) {
    return places.empty() || detail::eachPart(places, detail::separator, detail::wellFormedPlace);
}

}  // namespace kelvo::CatalogPlaces
