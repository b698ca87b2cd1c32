#include "PlanOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "kelvo/Console.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/Reporter.h"
#include "kelvo/TargetPaths.h"
#include "kelvo/WorkerPool.h"

namespace kelvo::tool {
namespace {

std::string paint(const std::string& text, const char* code) {
    static const bool colour = Console::colourOnOutput();
    return colour ? fmt::format("\033[{}m{}\033[0m", code, text) : text;
}

const char* levelColour(Level level) {
    switch (level) {
        case Level::safe: return "32";
        case Level::moderate: return "33";
        default: return "31";
    }
}

std::string levelText(Level level) { return L10n::t("level." + std::string(rawValue(level))); }
std::string costText(RegenCost cost) { return L10n::t("regenCost." + std::string(rawValue(cost))); }

// Measures the paths of the targets listed with their paths; made only when they are asked for.
class PathSizer {
public:
    explicit PathSizer(bool wanted) {
        if (wanted) sizer_.emplace(pool_.emplace());
    }
    const DirectorySizer* get() const { return sizer_ ? &*sizer_ : nullptr; }

private:
    std::optional<WorkerPool> pool_;
    std::optional<DirectorySizer> sizer_;
};

void printTargetLine(const CleanTarget& target, bool chosen, const PathSizer& paths) {
    // Padded before it is painted: the colour's escape codes take no room on the screen.
    fmt::print("  {} {:>11}  {} {:<18} {}\n", chosen ? paint("[x]", "1") : "[ ]", Format::bytes(target.sizeBytes),
               paint(fmt::format("{:<10}", levelText(target.level)), levelColour(target.level)),
               costText(target.regenCost), target.name);
    fmt::print("      {}\n", paint(target.id, "2"));
    if (!target.notes.empty()) fmt::print("      {}\n", target.notes);
    const DirectorySizer* sizer = paths.get();
    if (!sizer) return;
    if (target.kind.isCommand()) fmt::print("      {}\n", L10n::t("cli.plan.command", target.kind.commandLine()));
    for (const auto& [path, size] : TargetPaths::measured(target, *sizer))
        fmt::print("      {:>11}  {}{}\n", Format::bytes(size.bytes), path.string(),
                   size.hadErrors ? "  " + L10n::t("cli.size.lowerBound") : "");
}

std::int64_t totalOf(const std::vector<CleanTarget>& targets) { return Reporter::summarize(targets).totalBytes; }

}  // namespace

void printPlan(const PlanSelection& plan, CatalogProfile profile, bool withPaths) {
    if (plan.targets.empty()) {
        fmt::print("{}\n", L10n::t("cli.plan.empty"));
        return;
    }
    const auto summary = Reporter::summarize(plan.targets);
    const PathSizer paths(withPaths);
    for (const auto& [family, members] : Reporter::byFamily(plan.targets)) {
        fmt::print("{}  {}\n", paint(displayName(family, profile), "1"), Format::bytes(summary.byFamily.at(family)));
        for (const auto& target : members) printTargetLine(target, plan.selectedIDs.contains(target.id), paths);
        fmt::print("\n");
    }
    fmt::print("{}\n", paint(L10n::t("cli.plan.byFamily"), "1"));
    for (Family family : allFamilies())
        if (summary.byFamily.contains(family))
            fmt::print("  {:<40} {:>11}\n", displayName(family, profile), Format::bytes(summary.byFamily.at(family)));
    fmt::print("{}\n", paint(L10n::t("cli.plan.byLevel"), "1"));
    for (Level level : {Level::safe, Level::moderate, Level::aggressive})
        if (summary.byLevel.contains(level))
            fmt::print("  {:<40} {:>11}\n", levelText(level), Format::bytes(summary.byLevel.at(level)));
    fmt::print("{}\n", L10n::t("cli.plan.total", Format::bytes(summary.totalBytes)));
    const auto chosen = plan.selectedTargets();
    const auto count = static_cast<std::int64_t>(chosen.size());
    fmt::print("{}\n", L10n::plural("cli.plan.chosen", count, count, Format::bytes(totalOf(chosen))));
}

void printChosen(const PlanSelection& plan, CatalogProfile profile, bool dryRun, bool toTrash) {
    const auto chosen = plan.selectedTargets();
    const auto count = static_cast<std::int64_t>(chosen.size());
    fmt::print("{}\n", L10n::plural(std::string(dryRun ? "cli.clean.would" : "cli.clean.will") + (toTrash ? "Trash" : "Remove"), count, count,
                                    Format::bytes(totalOf(chosen))));
    const PathSizer paths(dryRun);
    for (const auto& [family, members] : Reporter::byFamily(chosen)) {
        fmt::print("{}\n", paint(displayName(family, profile), "1"));
        for (const auto& target : members) printTargetLine(target, true, paths);
    }
}

void printReport(const ExecutionReport& report, bool dryRun) {
    if (dryRun) fmt::print("{}\n", paint(L10n::t("cli.report.dryRun"), "1"));
    // A dry run's report holds what the clean would do: it is told in the conditional.
    const std::string would = dryRun ? "cli.report.would." : "cli.report.";
    // Below 1 KB the formatted size is already the exact count.
    // A run into the trash frees nothing yet: the bytes moved are told apart from those freed.
    if (report.trashedBytes > 0) fmt::print("{}\n", L10n::t(would + "trashed", Format::bytes(report.trashedBytes)));
    if (report.freedBytes > 0 || report.trashedBytes == 0)
        fmt::print("{}\n", report.freedBytes < 1024 ? L10n::t(would + "freed", Format::bytes(report.freedBytes))
                                                 : L10n::t(would + "freedExact", Format::bytes(report.freedBytes),
                                                           report.freedBytes));
    const auto list = [](const std::string& key, const std::vector<std::string>& ids) {
        if (ids.empty()) return;
        fmt::print("{}\n", L10n::t(key, static_cast<std::int64_t>(ids.size())));
        for (const auto& id : ids) fmt::print("  {}\n", id);
    };
    const auto entries = [](const std::string& key, const std::vector<ReportEntry>& items) {
        if (items.empty()) return;
        fmt::print("{}\n", L10n::t(key, static_cast<std::int64_t>(items.size())));
        for (const auto& item : items) fmt::print("  {}: {}\n", item.id, item.reason.text());
    };
    // What went to the trash is told apart from what is gone.
    std::vector<std::string> removed;
    for (const auto& id : report.deleted)
        if (std::find(report.trashed.begin(), report.trashed.end(), id) == report.trashed.end()) removed.push_back(id);
    list(would + "deleted", removed);
    list(would + "trashedIds", report.trashed);
    list(would + "partial", report.partial);
    list(would + "freedUnknown", report.freedUnknown);
    entries(would + "skipped", report.skipped);
    entries(would + "failed", report.errors);
}

ProgressLine::ProgressLine() : enabled_(Console::errorIsTerminal()) {}

ProgressLine::~ProgressLine() {
    if (enabled_) fmt::print(stderr, "\r\033[K");
}

ScanOptions ProgressLine::options() const {
    ScanOptions options;
    if (!enabled_) return options;
    options.progress = [](const ScanProgress& progress) {
        const auto total = static_cast<std::int64_t>(progress.cleanersTotal);
        fmt::print(stderr, "\r\033[K{}",
                   L10n::plural("cli.scan.progress", total, static_cast<std::int64_t>(progress.cleanersFinished), total,
                                Format::bytes(progress.bytesFound)));
        std::fflush(stderr);
    };
    return options;
}

std::optional<std::set<Family>> parseFamilies(const std::vector<std::string>& names, const std::vector<Family>& offered) {
    std::set<Family> families;
    for (const auto& name : names) {
        const auto family = familyFromUserName(name);
        if (!family || std::ranges::find(offered, *family) == offered.end()) {
            fmt::print(stderr, "{}\n", L10n::t("cli.family.unknown", name,
                                               fmt::format("{}", fmt::join(acceptedFamilyNames(offered), ", "))));
            return std::nullopt;
        }
        families.insert(*family);
    }
    return families;
}

}  // namespace kelvo::tool
