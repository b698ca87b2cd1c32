// kelvo schedule: the background scan's timer, set, removed or shown.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/Environment.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/ScanSchedule.h"

namespace kelvo::tool {
namespace {

using Frequency = ScanSchedule::Frequency;

int printStatus(const ScanSchedule& schedule) {
    const auto status = schedule.status();
    if (!status.frequency)
        fmt::print("{}\n", L10n::t("cli.schedule.edited", (schedule.unitFolder / ScanSchedule::timerName).string()));
    else if (*status.frequency == Frequency::off)
        fmt::print("{}\n", L10n::t("cli.schedule.status.off"));
    else
        fmt::print("{}\n", L10n::t("cli.schedule.status." + std::string(ScanSchedule::rawValue(*status.frequency)),
                                   status.notifyAboveBytes ? Format::bytes(*status.notifyAboveBytes) : "?"));
    return 0;
}

int printOutcome(const ScanSchedule& schedule, const ScanSchedule::Outcome& outcome) {
    using Manager = ScanSchedule::Outcome::Manager;
    const bool on = outcome.frequency != Frequency::off;
    for (const auto& file : outcome.files)
        fmt::print("{}\n", L10n::t(on ? "cli.schedule.wrote" : "cli.schedule.removed", file.string()));
    if (outcome.failedFile) {
        fmt::print(stderr, "{}\n", L10n::t("cli.schedule.fileFailed", outcome.failedFile->string(), outcome.fileError.message()));
        return 1;
    }
    if (outcome.manager == Manager::commandFailed) {
        fmt::print(stderr, "{}\n", L10n::t("cli.schedule.commandFailed", std::int64_t{*outcome.commandStatus}, outcome.laterCommand));
        return 1;
    }
    if (outcome.manager == Manager::notRunning)
        fmt::print("{}\n", L10n::t("cli.schedule.noManager", outcome.laterCommand));
    else if (on)
        fmt::print("{}\n", L10n::t("cli.schedule.enabled." + std::string(ScanSchedule::rawValue(outcome.frequency)),
                                   Format::bytes(schedule.notifyAboveBytes)));
    else
        fmt::print("{}\n", L10n::t("cli.schedule.disabled"));
    return 0;
}

}  // namespace

std::optional<std::int64_t> parseNotifyAbove(const std::string& text) {
    const auto bytes = Format::parseBytes(text);
    if (!bytes) fmt::print(stderr, "{}\n", L10n::t("cli.scan.notice.badSize", text));
    return bytes;
}

Command addScheduleCommand(CLI::App& app, ScheduleOptions& options) {
    auto* command = app.add_subcommand(
        "schedule", "Scan daily or weekly in the background (a systemd user timer) and notify when much can be freed");
    auto names = ScanSchedule::frequencyNames();
    names.emplace_back("status");
    command->add_option("frequency", options.frequency, "daily, weekly, off, or status (the default): what is set")
        ->check(CLI::IsMember(names));
    command->add_option("--notify-above", options.notifyAbove,
                        "Notify when the scan's preselection frees at least SIZE (default 5G)")
        ->type_name("SIZE");
    return {command, [&options] {
                auto schedule = ScanSchedule::forEnvironment(Environment::live());
                if (!options.notifyAbove.empty()) {
                    const auto bytes = parseNotifyAbove(options.notifyAbove);
                    if (!bytes) return usageErrorStatus;
                    schedule.notifyAboveBytes = *bytes;
                }
                const auto frequency = ScanSchedule::frequencyFromRawValue(options.frequency);
                if (!frequency) return printStatus(schedule);
                return printOutcome(schedule, schedule.set(*frequency));
            }};
}

}  // namespace kelvo::tool
