#pragma once
// What a scan run from the timer tells the user: one desktop notification when the
// preselected targets would free at least the threshold, saying how much, with a button
// "Open Kelvo" that starts the tray application with its panel open (offered only when
// that program is installed beside this one). Nothing is sent below the threshold, nor
// when no notification service runs; either way the scan itself stands. It never removes
// anything.
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Dependency.h"

namespace kelvo::platform {
class Notifier;
}

namespace kelvo {

std::shared_ptr<const platform::Notifier> liveNotifier();
using NotifierDependency = Dependency<std::shared_ptr<const platform::Notifier>, &liveNotifier>;

struct ScanNotice {
    static constexpr std::int64_t defaultThresholdBytes = std::int64_t{5} << 30;  // "5 GB" as Format shows it
    // The id of the action that opens the panel, as the notifier hands it back.
    static constexpr const char* openAction = "open";

    std::int64_t thresholdBytes = defaultThresholdBytes;
    NotifierDependency notifier;
    // The tray application; nothing: no button. Live: kelvo-menubar beside this program
    // when it is there.
    std::optional<std::filesystem::path> panelProgram = installedPanelProgram();
    // How long the button waits for a click before the notification is withdrawn.
    std::chrono::seconds wait = std::chrono::minutes(10);

    enum class Outcome {
        belowThreshold,  // nothing sent
        noService,       // at or above, but no notification service took it
        shown,           // shown; closed, or the wait ended, without the button
        panelOpened,     // the button was pressed and the application started
        panelFailed,     // the button was pressed and the application could not start
    };
    // After a scan that found these targets: their preselection (PlanSelection) is measured.
    Outcome after(const std::vector<CleanTarget>& scanned) const;

    static std::optional<std::filesystem::path> installedPanelProgram();
    // The argument that makes the tray application open its panel at start.
    static constexpr const char* showPanelArgument = "--show";
};

}  // namespace kelvo
