#include "kelvo/SimRuntime.h"

#include <nlohmann/json.hpp>

#include <array>
#include <limits>
#include <string_view>

#include "kelvo/platform/Process.h"

namespace kelvo {
namespace {

using TimePoint = std::chrono::system_clock::time_point;
using Json = nlohmann::json;

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

const Json* member(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

const std::string* stringMember(const Json& object, const char* key) {
    const Json* value = member(object, key);
    return value && value->is_string() ? value->get_ptr<const std::string*>() : nullptr;
}

// A JSON number as a signed 64-bit count: integers that fit, and floating values only when
// they are whole and in range; anything else is 0, as for an absent size.
std::int64_t sizeOf(const Json* value) {
    if (!value) return 0;
    if (value->is_number_integer() && !value->is_number_unsigned()) return value->get<std::int64_t>();
    if (value->is_number_unsigned()) {
        const auto count = value->get<std::uint64_t>();
        return count <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                   ? static_cast<std::int64_t>(count)
                   : 0;
    }
    if (value->is_number_float()) {
        const double count = value->get<double>();
        // 2^63 itself is out of range; every double below it converts exactly.
        constexpr double limit = 9223372036854775808.0;
        if (count >= -limit && count < limit && count == static_cast<double>(static_cast<std::int64_t>(count)))
            return static_cast<std::int64_t>(count);
    }
    return 0;
}

// The tool writes a boolean; a number counts only as the exact values 1 (true) or 0.
bool deletableOf(const Json* value) {
    if (!value) return false;
    if (value->is_boolean()) return value->get<bool>();
    if (value->is_number()) return value->get<double>() == 1.0;
    return false;
}

std::string displayName(const std::string& identifier, const Json& runtime) {
    const std::string* runtimeIdentifier = stringMember(runtime, "runtimeIdentifier");
    if (const std::string* version = stringMember(runtime, "version"); version && !version->empty()) {
        std::string_view platformName = "iOS";
        if (runtimeIdentifier) {
            // watchOS, tvOS and visionOS all contain "OS"; iOS is asked last on purpose.
            for (const std::string_view candidate : {"watchOS", "tvOS", "visionOS", "iOS"}) {
                if (runtimeIdentifier->find(candidate) != std::string::npos) {
                    platformName = candidate;
                    break;
                }
            }
        }
        return std::string(platformName) + " " + *version;
    }
    if (runtimeIdentifier) {
        constexpr std::string_view prefix = "com.apple.CoreSimulator.SimRuntime.";
        std::string name = *runtimeIdentifier;
        for (auto found = name.find(prefix); found != std::string::npos; found = name.find(prefix, found))
            name.erase(found, prefix.size());
        return name;
    }
    return identifier;
}

}  // namespace

std::vector<SimRuntime> SimRuntimeLister::live() {
    const auto outcome = platform::runProgram("/usr/bin/xcrun", {"simctl", "runtime", "list", "-j"}, true);
    if (!outcome || outcome->exitStatus != 0) return {};
    return parse(outcome->standardOutput);
}

std::vector<SimRuntime> SimRuntimeLister::parse(const std::string& data) {
    const Json document = Json::parse(data, nullptr, /*allow_exceptions=*/false);
    if (!document.is_object()) return {};
    std::vector<SimRuntime> runtimes;
    for (const auto& [identifier, runtime] : document.items()) {
        if (!runtime.is_object()) continue;
        SimRuntime entry;
        entry.identifier = identifier;
        entry.name = displayName(identifier, runtime);
        entry.sizeBytes = sizeOf(member(runtime, "sizeBytes"));
        entry.isDeletable = deletableOf(member(runtime, "deletable"));
        if (const std::string* lastUsed = stringMember(runtime, "lastUsedAt"); lastUsed && !lastUsed->empty())
            entry.lastUsed = parseDate(*lastUsed);
        runtimes.push_back(std::move(entry));
    }
    return runtimes;
}

std::optional<TimePoint> SimRuntimeLister::parseDate(const std::string& text) {
    // RFC 3339's date-time: "2024-03-01T14:22:05Z" or with "+01:00"/"-05:30"; the whole
    // text must match, and fractional seconds are not part of the accepted form.
    const std::string_view input = text;
    std::size_t position = 0;
    const auto year = digits(input, position, 4);
    if (!year || !literal(input, position, '-')) return std::nullopt;
    const auto month = digits(input, position, 2);
    if (!month || !literal(input, position, '-')) return std::nullopt;
    const auto day = digits(input, position, 2);
    if (!day || !literal(input, position, 'T')) return std::nullopt;
    const auto hour = digits(input, position, 2);
    if (!hour || !literal(input, position, ':')) return std::nullopt;
    const auto minute = digits(input, position, 2);
    if (!minute || !literal(input, position, ':')) return std::nullopt;
    const auto second = digits(input, position, 2);
    if (!second || position >= input.size()) return std::nullopt;

    int sign = 1;
    int offsetHours = 0;
    int offsetMinutes = 0;
    if (input[position] == 'Z') {
        ++position;
    } else if (input[position] == '+' || input[position] == '-') {
        sign = input[position++] == '-' ? -1 : 1;
        const auto hours = digits(input, position, 2);
        if (!hours || !literal(input, position, ':')) return std::nullopt;
        const auto minutes = digits(input, position, 2);
        if (!minutes) return std::nullopt;
        offsetHours = *hours;
        offsetMinutes = *minutes;
    } else {
        return std::nullopt;
    }
    if (position != input.size()) return std::nullopt;

    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59 || offsetHours > 23 || offsetMinutes > 59)
        return std::nullopt;
    const auto offset = std::chrono::hours(offsetHours) + std::chrono::minutes(offsetMinutes);
    const auto local = std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
                       std::chrono::seconds(*second);
    return TimePoint(local - sign * offset);
}

}  // namespace kelvo
