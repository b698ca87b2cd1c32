#pragma once
// What the user chooses and what is kept between runs, in ~/.config/kelvo/config.json.
// Loading never fails: a missing, unreadable or malformed file gives the defaults whole,
// and a file that is there but cannot be used says why (ConfigProblem).
// Only a regular file of at most 1 MiB is read (a FIFO or a device in its place counts as
// unreadable). "keepRecentDays" is a whole number however it is written (7, 7.0, 1e1);
// 7.5 or "7" are of the wrong type.
// Saving writes the keys sorted, two-space indented, " : " between key and value, every
// "/" escaped, and leaves "enabledFamilies" and "moveToTrash" out when they are absent and
// "checkMinimumVersion" out when it is true (the optional keys: when present, of the wrong type the file is malformed).
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "kelvo/ConfigProblem.h"

namespace kelvo {

struct Config {
    std::vector<std::string> projectRoots{"~/workspace"};  // as typed, unexpanded
    std::vector<std::string> extraExclusions;              // as typed, unexpanded
    std::string defaultLevel = "moderate";                 // a Level raw value
    std::int64_t keepRecentDays = 3;
    std::optional<std::vector<std::string>> enabledFamilies;  // absent: every family
    // Whether the application asks for the lowest version allowed to run when it starts.
    bool checkMinimumVersion = true;
    // Whether the panel's cleans move path targets into the desktop trash; absent: each
    // family's own default (trashedByDefault).
    std::optional<bool> moveToTrash;

    static constexpr std::size_t maximumFileBytes = 1 << 20;
    // The ages the front ends offer for keepRecentDays (a file may hold any whole number).
    static constexpr std::int64_t fewestKeepRecentDays = 0;
    static constexpr std::int64_t mostKeepRecentDays = 60;

    static const Config& defaults();
    static std::filesystem::path filePath(const std::filesystem::path& home);
    static bool exists(const std::filesystem::path& home);
    // A missing file gives the defaults and no problem.
    struct Loaded;
    static Loaded load(const std::filesystem::path& home);
    // Creates ~/.config/kelvo as needed and replaces the file whole or not at all (a crash or
    // a full disk leaves the old file); refuses anything but a regular file in its place.
    [[nodiscard]] std::error_code save(const std::filesystem::path& home) const;
    // Why a save failed, localised, naming the file: for the front ends to show.
    static std::string saveFailureText(const std::filesystem::path& home, std::error_code error);

    std::string encoded() const;
    // The text of a file; a problem's file is left empty (the caller knows it).
    static Loaded decode(const std::string& text);

    friend bool operator==(const Config&, const Config&) = default;
};

// What loading gives: the configuration in use, which callers that need only the values
// take as a plain Config, and, when a file is there but cannot be used, why (the
// configuration is then the defaults). Equality compares the configuration alone.
struct Config::Loaded : Config {
    std::optional<ConfigProblem> problem;
};

}  // namespace kelvo
