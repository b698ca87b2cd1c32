#include "panel/PanelRules.h"

#include <QStringList>
#include <algorithm>

#include "AppText.h"
#include "kelvo/Format.h"
#include "kelvo/Reporter.h"
#include "kelvo/TargetPaths.h"

namespace kelvo::app {

Screen chooseScreen(bool updateRequired, bool showingSettings, bool needsOnboarding, bool onboardingDismissed) {
    if (updateRequired) return Screen::updateRequired;
    if (showingSettings) return Screen::settings;
    if (needsOnboarding && !onboardingDismissed) return Screen::onboarding;
    return Screen::main;
}

bool isBusy(AppModel::Phase phase) { return phase == AppModel::Phase::scanning || phase == AppModel::Phase::cleaning; }

std::int64_t selectedBytes(const AppModel& model) { return Reporter::summarize(model.selectedTargets()).totalBytes; }

std::vector<Family> groups(const std::vector<CleanTarget>& targets) {
    std::vector<Family> present;
    for (Family family : allFamilies())
        if (std::any_of(targets.begin(), targets.end(), [&](const CleanTarget& t) { return t.family == family; }))
            present.push_back(family);
    return present;
}

Tone diskTone(const DiskSpace& disk) {
    const double used = disk.usedFraction();
    if (disk.totalBytes <= 0 || used <= 0.75) return Tone::accent;
    return used < 0.9 ? Tone::orange : Tone::red;
}

QString domainVerb(AppModel::Domain domain) {
    return AppText::t(domain == AppModel::Domain::clean ? "panel.domain.clean" : "panel.domain.prepare");
}

QString actionTitle(AppModel::Domain domain, bool nothingSelected, std::int64_t selectedBytes) {
    const std::string verb = domainVerb(domain).toStdString();
    if (nothingSelected) return AppText::t("panel.action.nothing", verb);
    return AppText::t("panel.action.size", verb, Format::bytes(selectedBytes));
}

QString resultLine(const ExecutionReport& report) {
    QString line = AppText::t("panel.result.freed", Format::bytes(report.freedBytes));
    if (report.trashedBytes > 0) line += AppText::t("panel.result.trashed", Format::bytes(report.trashedBytes));
    if (!report.partial.empty())
        line += AppText::t("panel.result.partial", static_cast<std::int64_t>(report.partial.size()));
    if (!report.skipped.empty())
        line += AppText::t("panel.result.skipped", static_cast<std::int64_t>(report.skipped.size()));
    return line;
}

QString riskText(const CleanTarget& target) {
    const char* key = target.level == Level::safe       ? "panel.risk.safe"
                      : target.level == Level::moderate ? "panel.risk.moderate"
                                                        : "panel.risk.aggressive";
    const QString level = AppText::t(key);
    if (target.regenCost != RegenCost::redownload) return level;
    return AppText::t("panel.risk.redownload", level.toStdString());
}

QString rowTooltip(const CleanTarget& target) {
    QStringList lines{QString::fromStdString(target.notes.empty() ? target.name : target.notes)};
    const auto preview = TargetPaths::preview(target, tooltipPathCount);
    if (target.kind.isCommand()) {
        lines.append(AppText::t("panel.paths.command", target.kind.commandLine()));
    } else {
        for (const auto& path : preview.lines) lines.append(QString::fromStdString(path));
    }
    if (preview.more > 0) lines.append(AppText::t("panel.paths.more", static_cast<std::int64_t>(preview.more)));
    return lines.join('\n');
}

QString notesText(const std::vector<std::string>& notes, std::size_t shown) {
    QStringList lines;
    for (std::size_t index = 0; index < notes.size() && index < shown; ++index)
        lines << QString::fromStdString(notes[index]);
    if (notes.size() > shown) lines << QStringLiteral("…");
    return lines.join('\n');
}

}  // namespace kelvo::app
