#pragma once
// What the user chooses and what is kept between runs, in ~/.config/kelvo/config.json.
// Loading never fails: a missing, unreadable or malformed file gives the defaults whole.
// Saving writes the keys sorted, two-space indented, " : " between key and value, every
// "/" escaped, and leaves "enabledFamilies" out when it is absent.
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace kelvo {

struct Config {
    std::vector<std::string> projectRoots{"~/workspace"};  // as typed, unexpanded
    std::vector<std::string> extraExclusions;              // as typed, unexpanded
    std::string defaultLevel = "moderate";                 // a Level raw value
    std::int64_t keepRecentDays = 3;
    std::optional<std::vector<std::string>> enabledFamilies;  // absent: every family

    static const Config& defaults();
    static std::filesystem::path filePath(const std::filesystem::path& home);
    static bool exists(const std::filesystem::path& home);
    static Config load(const std::filesystem::path& home);
    // Creates ~/.config/kelvo as needed and overwrites the file in place.
    std::error_code save(const std::filesystem::path& home) const;

    std::string encoded() const;
    static std::optional<Config> decode(const std::string& text);

    friend bool operator==(const Config&, const Config&) = default;
};

}  // namespace kelvo
