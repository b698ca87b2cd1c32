#pragma once
// Installed simulator runtimes as the simulator control tool lists them.
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kelvo/Dependency.h"

namespace kelvo {

struct SimRuntime {
    std::string identifier;  // the member name in the tool's JSON; the delete command's argument
    std::string name;        // display name, e.g. "iOS 17.2"
    std::int64_t sizeBytes = 0;
    bool isDeletable = false;
    std::optional<std::chrono::system_clock::time_point> lastUsed;
    friend bool operator==(const SimRuntime&, const SimRuntime&) = default;
};

namespace SimRuntimeLister {
// Runs `/usr/bin/xcrun simctl runtime list -j`; empty on any failure (no such tool here).
std::vector<SimRuntime> live();
// The tool's JSON: one object member per runtime, named by its identifier. Members that
// are not objects are skipped; fields of the wrong type take their defaults ("sizeBytes"
// must be a whole number that fits, "deletable" true or the number 1, "lastUsedAt" a date
// parseDate accepts). Anything but a JSON object gives an empty list. The display name is
// the platform found in "runtimeIdentifier" (watchOS, tvOS, visionOS, iOS, asked in that
// order; iOS when none) and "version"; without a version, the runtime identifier with
// "com.apple.CoreSimulator.SimRuntime." removed; without either, the member name.
std::vector<SimRuntime> parse(const std::string& data);
// RFC 3339 without fractional seconds ("2024-03-01T14:22:05Z", "+01:00" offsets).
std::optional<std::chrono::system_clock::time_point> parseDate(const std::string& text);
}  // namespace SimRuntimeLister

// Lists the runtimes from any thread; the live one is SimRuntimeLister::live.
using RuntimeListing = std::function<std::vector<SimRuntime>()>;
RuntimeListing liveRuntimeLister();
using RuntimeLister = Dependency<RuntimeListing, &liveRuntimeLister>;

}  // namespace kelvo
