#include "kelvo/SimRuntime.h"

#include <nlohmann/json.hpp>

#include <array>
#include <limits>
#include <string_view>

#include "vocabulary/DateText.h"
#include "kelvo/platform/Process.h"

namespace kelvo {
namespace {

using TimePoint = std::chrono::system_clock::time_point;
using Json = nlohmann::json;

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

RuntimeListing liveRuntimeLister() { return &SimRuntimeLister::live; }

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
    DateText reader(text);
    if (!reader.readDateAndTime('T')) return std::nullopt;
    const auto offset = reader.literal('Z') ? std::chrono::minutes(0) : reader.zoneOffset(/*withColon=*/true);
    if (!offset || !reader.atEnd()) return std::nullopt;
    return reader.instant(*offset);
}

}  // namespace kelvo
