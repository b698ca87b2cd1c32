#include "kelvo/ScanNotice.h"

#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/LocalFiles.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/Reporter.h"
#include "kelvo/platform/Notifier.h"
#include "kelvo/platform/Process.h"

namespace kelvo {

std::shared_ptr<const platform::Notifier> liveNotifier() {
    static const auto notifier = std::make_shared<const platform::LiveNotifier>();
    return notifier;
}

std::optional<std::filesystem::path> ScanNotice::installedPanelProgram() {
    auto program = LocalFiles::besideExecutable("kelvo-menubar");
    if (!LocalFiles::exists(program)) return std::nullopt;
    return program;
}

ScanNotice::Outcome ScanNotice::after(const std::vector<CleanTarget>& scanned) const {
    const std::int64_t preselectedBytes = Reporter::summarize(PlanSelection(scanned).selectedTargets()).totalBytes;
    if (preselectedBytes < thresholdBytes || preselectedBytes <= 0) return Outcome::belowThreshold;
    const std::string size = Format::bytes(preselectedBytes);
    platform::Notification notification;
    notification.summary = L10n::t("notice.summary", size);
    notification.body = L10n::t("notice.body", size);
    notification.icon = "user-trash-symbolic";
    if (panelProgram) {
        notification.actions.push_back({openAction, L10n::t("notice.open")});
        notification.wait = wait;
    }
    const auto outcome = notifier->show(notification);
    if (!outcome.shown) return Outcome::noService;
    if (outcome.chosenAction != openAction) return Outcome::shown;
    return platform::startProgram(*panelProgram, {showPanelArgument}) ? Outcome::panelOpened : Outcome::panelFailed;
}

}  // namespace kelvo
