#pragma once
// Installed simulator runtimes as the simulator control tool lists them.
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

struct SimRuntime {
    std::string identifier;  // the member name in the tool's JSON; the delete command's argument
    std::string name;        // display name, e.g. "iOS 17.2"
    std::int64_t sizeBytes = 0;
    bool isDeletable = false;
    std::optional<std::chrono::system_clock::time_point> lastUsed;
    friend bool operator==(const SimRuntime&, const SimRuntime&) = default;
};

using RuntimeLister = std::function<std::vector<SimRuntime>()>;

namespace SimRuntimeLister {
// Runs `/usr/bin/xcrun simctl runtime list -j`; empty on any failure (no such tool here).
std::vector<SimRuntime> live();
// The tool's JSON: one object member per runtime; malformed members are skipped.
std::vector<SimRuntime> parse(const std::string& data);
// RFC 3339 without fractional seconds ("2024-03-01T14:22:05Z", "+01:00" offsets).
std::optional<std::chrono::system_clock::time_point> parseDate(const std::string& text);
}  // namespace SimRuntimeLister

}  // namespace kelvo
