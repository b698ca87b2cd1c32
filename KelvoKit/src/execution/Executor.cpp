#include "kelvo/Executor.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "kelvo/DirectorySizer.h"
#include "safety/InstalledApps.h"
#include "vocabulary/Paths.h"
#include "safety/ProtectedApps.h"
#include "safety/RemovalChecks.h"
#include "safety/ShellCommand.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"
#include "kelvo/platform/Trash.h"
#include "kelvo/platform/TreeRemoval.h"

namespace kelvo {
namespace {

using std::filesystem::path;

// Anything at all stands at the path, a dangling link included (links not followed), or
// what stands there cannot be told: then it is not known to be gone.
bool somethingAt(const path& location) { return platform::isPresent(location).value_or(true); }

std::optional<std::string> bundleIDAfter(const std::string& id, const std::string& prefix) {
    if (!id.starts_with(prefix)) return std::nullopt;
    return id.substr(prefix.size());
}

void skip(ExecutionReport& report, const CleanTarget& target, Reason reason) {
    report.skipped.push_back({target.id, std::move(reason)});
}


// The removals a run has started on the pool, with the paths they work on. A target that
// touches one of those paths, and every command, waits for them all first, so that each
// sees the file system as handling the targets one after another would have left it.
class RunningRemovals {
public:
    explicit RunningRemovals(WorkerPool* pool) : pool_(pool) {}
    ~RunningRemovals() { waitForAll(); }
    RunningRemovals(const RunningRemovals&) = delete;
    RunningRemovals& operator=(const RunningRemovals&) = delete;

    void start(const std::vector<path>& paths, std::function<void(WorkerPool&)> removal) {
        std::vector<std::string> standard;
        for (const auto& location : paths) standard.push_back(Paths::standardized(location).string());
        if (overlapsRunning(standard)) waitForAll();
        running_.insert(running_.end(), std::make_move_iterator(standard.begin()), std::make_move_iterator(standard.end()));
        if (!pool_) {
            ownPool_ = std::make_unique<WorkerPool>();
            pool_ = ownPool_.get();
        }
        pool_->submit(group_, [removal = std::move(removal), pool = pool_] { removal(*pool); });
    }

    void waitForAll() {
        if (pool_) pool_->wait(group_);
        running_.clear();
    }

private:
    bool overlapsRunning(const std::vector<std::string>& paths) const {
        return std::any_of(paths.begin(), paths.end(), [&](const std::string& location) {
            return std::any_of(running_.begin(), running_.end(), [&](const std::string& other) {
                return Paths::same(location, other) || Paths::isInside(location, other) ||
                       Paths::isInside(other, location);
            });
        });
    }

    WorkerPool* pool_;
    std::unique_ptr<WorkerPool> ownPool_;
    TaskGroup group_;
    std::vector<std::string> running_;
};

// Removes the paths of a target that passed every check and reports on that target alone:
// deleted, partial, or skipped with the reason for each path that stayed.
ExecutionReport removalOf(const Executor& executor, const CleanTarget& target, WorkerPool& pool) {
    ExecutionReport report;
    std::int64_t freed = 0;
    bool skippedSome = false;
    bool removedSome = false;
    for (const auto& location : target.kind.pathList()) {
        const path standard = Paths::standardized(location);
        if (!somethingAt(standard)) continue;
        // Asked again: a link may have appeared since the check above.
        if (auto reason = executor.unsafeToDeleteReason(location)) {
            skip(report, target, std::move(*reason));
            skippedSome = true;
            continue;
        }
        if (executor.homeTrash) {
            const std::string item = standard.string(), trash = Paths::standardized(*executor.homeTrash).string();
            if (Paths::same(item, trash) || Paths::isInside(item, trash) || Paths::isInside(trash, item)) {
                skippedSome = true;
                skip(report, target, {Reason::Code::trashItself, Paths::lastComponent(standard)});
                continue;
            }
            // A rename: the item goes whole or not at all, so no remnant is left to report.
            const std::int64_t size = DirectorySizer(pool).measure(standard).bytes;
            platform::TrashedItem trashed;
            const std::error_code error = platform::moveToTrash(standard, *executor.homeTrash, trashed);
            if (!error) {
                freed += size;
                removedSome = true;
                continue;
            }
            skippedSome = true;
            const std::string name = Paths::lastComponent(standard);
            skip(report, target,
                 error == std::errc::cross_device_link
                     ? Reason{Reason::Code::trashOtherVolume, name}
                     : Reason{Reason::Code::trashFailed, name + " (" + error.message() + ")"});
            continue;
        }
        const RemovalOutcome outcome = Executor::removeResiliently(standard, &pool);
        freed += outcome.freed;
        if (outcome.fullyRemoved) {
            removedSome = true;
            continue;
        }
        skippedSome = true;
        const std::string name = Paths::lastComponent(standard);
        if (outcome.freed < 1) {
            skip(report, target, {Reason::Code::noPermission, name});
        } else {
            skip(report, target, {Reason::Code::systemRemnant, name});
            removedSome = true;
        }
    }
    (executor.homeTrash ? report.trashedBytes : report.freedBytes) += (!skippedSome || removedSome) ? freed : 0;
    if (!skippedSome) {
        report.deleted.push_back(target.id);
        if (executor.homeTrash) report.trashed.push_back(target.id);
    } else if (removedSome) {
        report.partial.push_back(target.id);
    }
    return report;
}

}  // namespace

ExecutionReport Executor::execute(const std::vector<CleanTarget>& targets) const {
    const ProcessProbe& processes = *probe;
    // One report per target, joined in target order once every removal has finished.
    std::vector<ExecutionReport> reports(targets.size());
    RunningRemovals removals(pool);

    for (std::size_t index = 0; index < targets.size(); ++index) {
        const CleanTarget& target = targets[index];
        ExecutionReport& report = reports[index];
        if (!force) {
            auto names = guardedProcesses(target.family);
            names.insert(names.end(), target.guardedProcesses.begin(), target.guardedProcesses.end());
            const auto running = std::find_if(names.begin(), names.end(),
                                              [&](const std::string& name) { return processes.isRunning(name); });
            if (running != names.end()) {
                skip(report, target, {Reason::Code::processRunning, *running});
                continue;
            }
        }
        if (auto bundle = runningBundle(target)) {
            skip(report, target, {Reason::Code::appRunning, *bundle});
            continue;
        }
        if (auto reason = protectedAppReason(target)) {
            skip(report, target, std::move(*reason));
            continue;
        }

        if (target.kind.isCommand()) {
            if (auto reason = commandRefusal(target.kind.commandLine())) {
                skip(report, target, std::move(*reason));
                continue;
            }
            if (dryRun) {
                report.deleted.push_back(target.id);
                report.freedBytes += target.sizeBytes;
                continue;
            }
            removals.waitForAll();
            const int status = runCommand(target.kind.commandLine(), shellVariables);
            if (status == 127) {
                report.errors.push_back({target.id, {Reason::Code::toolNotFound, {}}});
            } else if (status != 0) {
                report.errors.push_back({target.id, {Reason::Code::exitStatus, std::to_string(status)}});
            } else {
                report.deleted.push_back(target.id);
                report.freedUnknown.push_back(target.id);
            }
            continue;
        }

        // Every path is checked before any is removed: one refused path leaves them all.
        const auto& paths = target.kind.pathList();
        bool refused = false;
        for (const auto& location : paths) {
            if (auto reason = pathRefusal(location)) {
                skip(report, target, std::move(*reason));
                refused = true;
                break;
            }
        }
        if (refused) continue;

        if (dryRun) {
            report.deleted.push_back(target.id);
            if (homeTrash) report.trashed.push_back(target.id);
            (homeTrash ? report.trashedBytes : report.freedBytes) += target.sizeBytes;
            continue;
        }

        removals.start(paths, [this, &target, &report](WorkerPool& workers) {
            report = removalOf(*this, target, workers);
        });
    }
    removals.waitForAll();
    ExecutionReport whole;
    for (auto& report : reports) whole.append(std::move(report));
    return whole;
}

CommandFunction liveCommandRunner() { return &Executor::shell; }

ExecutionReport Executor::refusingAll(const std::vector<CleanTarget>& targets, const Reason& reason) {
    ExecutionReport report;
    for (const auto& target : targets) skip(report, target, reason);
    return report;
}

int Executor::shell(const std::string& commandLine, const ShellVariables& variables) {
    return platform::runShell(commandLine, variables);
}

RemovalOutcome Executor::removeResiliently(const path& location, WorkerPool* pool) {
    const path standard = Paths::standardized(location);
    const DirectorySizer sizer = pool ? DirectorySizer(*pool) : DirectorySizer();
    const std::int64_t before = sizer.measure(standard).bytes;
    if (!removeItemMakingWritable(standard, pool)) return {before, true};
    const std::int64_t after = somethingAt(standard) ? sizer.measure(standard).bytes : 0;
    return {std::max<std::int64_t>(0, before - after), !somethingAt(standard)};
}

std::error_code Executor::removeItemMakingWritable(const path& location, WorkerPool* pool) {
    TaskGroup group;
    platform::WorkSharing sharing;
    if (pool)
        sharing = {
            .submit = [pool, &group](std::function<void()> task) { pool->submit(group, std::move(task)); },
            .waitForAll = [pool, &group] { pool->wait(group); },
            .hasIdleWorker = [pool] { return pool->hasIdleWorker(); },
        };
    return platform::removeTree(Paths::standardized(location),
                                {.addOwnerPermissions = true, .sharing = std::move(sharing)});
}

std::optional<std::string> Executor::runningBundle(const CleanTarget& target) const {
    if (target.kind.isCommand()) return std::nullopt;
    for (const auto& bundle : target.kind.pathList())
        if (InstalledApps::appName(bundle) && InstalledApps::isRunning(bundle, *probe)) return bundle.string();
    return std::nullopt;
}

std::optional<Reason> Executor::protectedAppReason(const CleanTarget& target) const {
    if (target.family != Family::appLeftovers && target.family != Family::unusedApps) return std::nullopt;
    const ProtectedApps& apps = ProtectedApps::standard();
    for (const char* prefix : {"app:", "leftover:"}) {
        const auto bundleID = bundleIDAfter(target.id, prefix);
        if (bundleID && apps.coversBundleID(*bundleID))
            return Reason{Reason::Code::protectedAppID, *bundleID};
    }
    if (target.kind.isCommand()) return std::nullopt;
    for (const auto& bundle : target.kind.pathList()) {
        const auto name = InstalledApps::appName(bundle);
        if (!name) continue;
        const auto bundleID = InstalledApps::infoPlistString(bundle, "CFBundleIdentifier");
        if (bundleID && apps.coversBundleID(*bundleID)) return Reason{Reason::Code::protectedAppID, *bundleID};
        if (apps.coversName(*name)) return Reason{Reason::Code::protectedAppName, *name};
    }
    return std::nullopt;
}

std::optional<Reason> Executor::unsafeToDeleteReason(const path& location) const {
    if (auto reason = RemovalChecks::linkReason(location)) return reason;
    const path standard = Paths::standardized(location);
    const path candidate = Paths::standardized(platform::resolveSymlinks(standard.parent_path())) / standard.filename();
    if (!safety.isDeletable(candidate)) return Reason{Reason::Code::resolvedUnsafe, candidate.string()};
    return RemovalChecks::ownerReason(standard);
}

std::optional<Reason> Executor::pathRefusal(const path& location) const {
    if (!safety.isDeletable(location)) return Reason{Reason::Code::protectedPath, location.string()};
    return unsafeToDeleteReason(location);
}

std::optional<Reason> Executor::commandRefusal(const std::string& commandLine) const {
    const ShellCommand command = ShellCommand::read(commandLine, shellVariables);
    if (command.refusal) return command.refusal;
    for (const auto& place : command.places) {
        // A pattern's folder must be a place to remove in, whatever it matches now.
        if (!safety.isDeletable(place.path)) return Reason{Reason::Code::protectedPath, place.path.string()};
        for (const auto& match : ShellCommand::matches(place))
            if (auto reason = pathRefusal(match)) return reason;
    }
    return std::nullopt;
}

}  // namespace kelvo
