#include "catalog/PlaceMarks.h"

#include <string_view>

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo::PlaceMarks {
namespace {

bool matchesOne(const std::filesystem::path& place, std::string_view pattern) {
    while (true) {
        const auto bar = pattern.find('|');
        const auto alternative = pattern.substr(0, bar);
        const auto candidate = Paths::appending(place, std::string(alternative));
        if (!alternative.empty() && platform::isPresent(candidate).value_or(false)) return true;
        if (bar == std::string_view::npos) return false;
        pattern.remove_prefix(bar + 1);
    }
}

}  // namespace

bool holdsWorkTree(const std::filesystem::path& place) {
    return platform::isPresent(place / ".git").value_or(true);
}

bool carries(const std::filesystem::path& place, const Marks& marks) {
    for (const auto& pattern : marks)
        if (!matchesOne(place, pattern)) return false;
    return true;
}

bool offerable(const std::filesystem::path& place, const Marks& marks) {
    return !holdsWorkTree(place) && carries(place, marks);
}

}  // namespace kelvo::PlaceMarks
