#pragma once
// The scan that runs by itself: a systemd user timer, daily or weekly, that starts
// `kelvo scan --quiet --notify-above BYTES` (ScanNotice) and never removes anything. Its two
// unit files, kelvo-scan.service (Type=oneshot, the program by its absolute path) and
// kelvo-scan.timer (OnCalendar=, Persistent=true, so a run missed while the machine was off
// comes at the next start), live in the user's unit folder, $XDG_CONFIG_HOME/systemd/user.
//
// Setting a frequency writes both files, each whole or not at all, then, when a user
// manager runs, reloads it and enables and starts the timer. Off stops and disables the
// timer, removes both files (and the timer's link in timers.target.wants, which only the
// manager removes otherwise), then reloads. Without a running manager, or when systemctl
// is missing or fails, the files are still written or removed and the outcome carries the
// command the user should run later. Failures are values, never exceptions.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "kelvo/Dependency.h"
#include "kelvo/Environment.h"
#include "kelvo/ScanNotice.h"

namespace kelvo::platform {
class UserServiceManager;
}

namespace kelvo {

std::shared_ptr<const platform::UserServiceManager> liveUserServiceManager();
using ServiceManagerDependency =
    Dependency<std::shared_ptr<const platform::UserServiceManager>, &liveUserServiceManager>;

struct ScanSchedule {
    enum class Frequency { off, daily, weekly };
    static constexpr std::string_view serviceName = "kelvo-scan.service";
    static constexpr std::string_view timerName = "kelvo-scan.timer";

    std::filesystem::path unitFolder;  // the user's unit folder
    std::filesystem::path program;     // the kelvo program the service runs, absolute
    std::int64_t notifyAboveBytes = ScanNotice::defaultThresholdBytes;
    ServiceManagerDependency manager;

    // The schedule of env's user: its unit folder, and the kelvo program beside the
    // running executable (the tool itself, or the one installed beside the application).
    static ScanSchedule forEnvironment(const Environment& env);

    static std::string_view rawValue(Frequency frequency);
    static std::optional<Frequency> frequencyFromRawValue(std::string_view raw);
    // "off", "daily", "weekly".
    static std::vector<std::string> frequencyNames();

    std::string serviceUnit() const;
    std::string timerUnit(Frequency frequency) const;

    struct Outcome {
        enum class Manager {
            done,           // the user manager took the change
            notRunning,     // no user manager runs, or systemctl is missing
            commandFailed,  // systemctl answered with a failure
        };
        Frequency frequency = Frequency::off;
        // The unit files written (daily, weekly) or removed (off), in that order.
        std::vector<std::filesystem::path> files;
        // The file that could not be written or removed, and why; the manager is then not asked.
        std::optional<std::filesystem::path> failedFile;
        std::error_code fileError;
        Manager manager = Manager::done;
        // When the manager did not take the change: the failed command's exit status, and
        // the command the user should run when a manager runs.
        std::optional<int> commandStatus;
        std::string laterCommand;

        bool succeeded() const { return !failedFile && manager == Manager::done; }
    };
    Outcome set(Frequency frequency) const;

    // What the unit folder holds now: off without a timer file; nothing when the timer
    // file holds a calendar this program does not write (edited by hand).
    struct Status {
        std::optional<Frequency> frequency;
        std::optional<std::int64_t> notifyAboveBytes;  // as the service file says
    };
    Status status() const;

private:
    std::filesystem::path servicePath() const { return unitFolder / serviceName; }
    std::filesystem::path timerPath() const { return unitFolder / timerName; }
};

}  // namespace kelvo
