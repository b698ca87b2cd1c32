#include "kelvo/AppMetadata.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"

namespace kelvo {
namespace {

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char character) { return std::isspace(static_cast<unsigned char>(character)) != 0; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// Reads exactly `width` decimal digits at `position`, advancing past them.
std::optional<int> digits(std::string_view text, std::size_t& position, std::size_t width) {
    if (position + width > text.size()) return std::nullopt;
    int value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        const char character = text[position + index];
        if (character < '0' || character > '9') return std::nullopt;
        value = value * 10 + (character - '0');
    }
    position += width;
    return value;
}

bool literal(std::string_view text, std::size_t& position, char expected) {
    if (position >= text.size() || text[position] != expected) return false;
    ++position;
    return true;
}

// The Spotlight date, or nothing when the tool is missing, fails or has no date.
std::optional<TimePoint> spotlightLastUsed(const std::filesystem::path& bundle) {
    const auto outcome =
        platform::runProgram("/usr/bin/mdls", {"-raw", "-name", "kMDItemLastUsedDate", bundle.string()}, true);
    if (!outcome || outcome->exitStatus != 0) return std::nullopt;
    return LiveAppMetadata::parseToolDate(std::string(trimmed(outcome->standardOutput)));
}

// The later modification date of the bundle and of its Contents folder: installers and
// updates touch one or the other, so the later one is the better guess of the last use.
std::optional<TimePoint> modifiedLast(const std::filesystem::path& bundle) {
    const auto ofBundle = platform::modificationTime(bundle);
    const auto ofContents = platform::modificationTime(bundle / "Contents");
    if (ofBundle && ofContents) return std::max(*ofBundle, *ofContents);
    return ofBundle ? ofBundle : ofContents;
}

}  // namespace

std::optional<TimePoint> LiveAppMetadata::lastUsed(const std::filesystem::path& bundle) const {
    if (auto date = spotlightLastUsed(bundle)) return date;
    return modifiedLast(bundle);
}

std::optional<TimePoint> LiveAppMetadata::parseToolDate(const std::string& text) {
    // "yyyy-MM-dd HH:mm:ss Z", e.g. "2024-03-01 14:22:05 +0000"; the whole text must match.
    const std::string_view input = text;
    std::size_t position = 0;
    const auto year = digits(input, position, 4);
    if (!year || !literal(input, position, '-')) return std::nullopt;
    const auto month = digits(input, position, 2);
    if (!month || !literal(input, position, '-')) return std::nullopt;
    const auto day = digits(input, position, 2);
    if (!day || !literal(input, position, ' ')) return std::nullopt;
    const auto hour = digits(input, position, 2);
    if (!hour || !literal(input, position, ':')) return std::nullopt;
    const auto minute = digits(input, position, 2);
    if (!minute || !literal(input, position, ':')) return std::nullopt;
    const auto second = digits(input, position, 2);
    if (!second || !literal(input, position, ' ')) return std::nullopt;
    if (position >= input.size() || (input[position] != '+' && input[position] != '-')) return std::nullopt;
    const int sign = input[position++] == '-' ? -1 : 1;
    const auto offsetHours = digits(input, position, 2);
    const auto offsetMinutes = offsetHours ? digits(input, position, 2) : std::nullopt;
    if (!offsetMinutes || position != input.size()) return std::nullopt;

    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59 || *offsetHours > 23 || *offsetMinutes > 59)
        return std::nullopt;
    const auto offset = std::chrono::hours(*offsetHours) + std::chrono::minutes(*offsetMinutes);
    const auto local = std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
                       std::chrono::seconds(*second);
    return TimePoint(local - sign * offset);
}

std::optional<TimePoint> StubAppMetadata::lastUsed(const std::filesystem::path& bundle) const {
    const auto found = dates.find(Paths::lastComponent(bundle));
    if (found == dates.end()) return std::nullopt;
    return found->second;
}

}  // namespace kelvo
