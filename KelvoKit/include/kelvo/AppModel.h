#pragma once
// The one observable object behind the desktop screens: the active domain, the last
// scan's targets (largest first) and notes, the user's selection, the phase of work, the last clean
// report, the disk figures and whether an update is required, with the operations the
// screens trigger. Scanning and cleaning are delegated to the service of the active
// domain; the model itself never touches the file system for them.
//
// Threads. The model belongs to one thread, the user-interface thread: every member is
// called there, and observers are told there, synchronously, after each change of a
// published field (fields with an equality are reported only when their value changes).
// Work (scan, clean, version check, family detection) runs in the background on copies
// of the services; its result comes back as a closure posted through the dispatcher the
// model was given, and only that closure changes published fields. A completion passed
// to an asynchronous operation runs on the user-interface thread after the model has
// published. A model destroyed before its work returns drops the results: it asks a running
// scan to stop and waits for its work to end (a clean runs to its end).
//
// At most one scan task is kept: startScan cancels the previous one first. A cancelled
// scan publishes nothing but the phase (idle, unless a newer scan has taken over) and its
// walk is asked to stop early. A clean run cannot be cancelled.
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "kelvo/CleanService.h"
#include "kelvo/DiskSpace.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Family.h"
#include "kelvo/PrepareService.h"
#include "kelvo/Reporter.h"
#include "kelvo/ScanSchedule.h"
#include "kelvo/VersionGate.h"

namespace kelvo {

using Closure = std::function<void()>;
// Hands a closure to a thread: the user-interface thread's event loop, or a worker.
// Must be callable from any thread.
using Dispatcher = std::function<void(Closure)>;

// The two domain services, as the model builds them from an environment.
struct AppServices {
    CleanService clean;
    PrepareService prepare;

    // Live dependencies: the live process probe and the shell runner for both; for the
    // prepare domain six months as the age limit from now, the live last-used dates, the
    // live simulator-runtime list and the standard application folders.
    static AppServices live(const Environment& env);
};

// What the model takes from its surroundings besides its services. Each member left out
// is the live one.
struct AppModelDependencies {
    // Runs work off the user-interface thread: live, a new thread for each operation, owned
    // by the dispatcher and joined when its last copy (the model's) goes.
    Dispatcher inBackground = ownThreads();
    // The environment a reload reads: live, Environment::live().
    std::function<Environment()> loadEnvironment = [] { return Environment::live(); };
    std::function<AppServices(const Environment&)> makeServices = &AppServices::live;
    std::function<std::optional<DiskSpace>(const std::filesystem::path&)> measureDisk = &DiskSpace::current;

    static Dispatcher ownThreads();
};

class AppModel {
public:
    enum class Domain { clean, prepare };
    enum class Phase { idle, scanning, cleaning, done };
    // The published fields, as observers are told of them.
    enum class Field { domain, targets, selectedIDs, phase, lastReport, disk, updateRequired, notes };
    using Observer = std::function<void(Field)>;

    // Published fields at their initial values, no disk figure yet. The user's home, for
    // the disk figure and the configuration file, is the one of the clean service's
    // environment (a reload takes the new environment's).
    AppModel(Dispatcher toUserInterface, CleanService clean, PrepareService prepare,
             std::optional<VersionGate> versionGate, AppModelDependencies dependencies = {});
    // The live model: the live gate (none when VersionGate::enabledFor the configuration in
    // env's home says no), services built from env, the disk figure read.
    AppModel(Dispatcher toUserInterface, const Environment& env, AppModelDependencies dependencies = {});
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    static constexpr std::array<Domain, 2> allDomains{Domain::clean, Domain::prepare};
    static std::string_view rawValue(Domain domain);

    // Observers are called in the order they subscribed; the id ends a subscription.
    std::size_t observe(Observer observer);
    void stopObserving(std::size_t id);

    Domain domain() const { return domain_; }
    // No side effect: results stay until the next scan or clearResults.
    void setDomain(Domain domain);
    const std::vector<CleanTarget>& targets() const { return targets_; }
    const std::set<std::string>& selectedIDs() const { return selectedIDs_; }
    // The last scan's remarks on what it left out or could not read (ScanResult::notes);
    // kept until the next scan or clearResults.
    const std::vector<std::string>& notes() const { return notes_; }
    void setSelectedIDs(std::set<std::string> ids);
    Phase phase() const { return phase_; }
    const std::optional<ExecutionReport>& lastReport() const { return lastReport_; }
    const std::optional<DiskSpace>& disk() const { return disk_; }
    bool updateRequired() const { return updateRequired_; }
    // Whether targets holds what a finished scan found (empty: it found nothing), as
    // opposed to nothing scanned yet; cleared with the results. Published with targets.
    bool scanned() const { return scanned_; }

    ScanSummary summary() const { return Reporter::summarize(targets_); }
    // True while no configuration file exists in the user's home, whatever a file's content.
    bool needsOnboarding() const;

    const CleanService& cleanService() const { return clean_; }
    const PrepareService& prepareService() const { return prepare_; }
    const std::optional<VersionGate>& versionGate() const { return versionGate_; }

    void refreshDisk();
    // Rebuilds both services from a freshly loaded environment, then refreshes the disk
    // figure; results and gate stay.
    void reloadConfig();
    // Writes the configuration (the file's current values, or the defaults when it cannot
    // be read) with the given families as raw values in ascending text order, or with no
    // family list (every family) for nothing, then reloads. Project folders, when given and
    // not empty, are stored as typed, replacing the file's. Returns why the save failed
    // (Config::saveFailureText tells the user); nothing is reloaded then.
    [[nodiscard]] std::error_code completeOnboarding(const std::optional<std::set<Family>>& enabledFamilies,
                                                     const std::vector<std::string>& projectRoots = {});
    // The families the clean service finds on this machine, passed to done. With project
    // folders given (as typed) the scan walks them instead of the configured or found ones;
    // on the Linux profile, whenever the scan has a project folder that exists, the project
    // build folders family is among the families, built today or not.
    void detectCategories(std::function<void(std::set<Family>)> done,
                          const std::optional<std::vector<std::string>>& projectRoots = std::nullopt);
    // The folders under the home that hold projects while the configuration names none
    // of its own (ProjectDiscovery), passed to done; none otherwise.
    void findProjectFolders(std::function<void(std::vector<std::filesystem::path>)> done);
    // Sets the scheduled scan in the background, since the user manager may be slow to
    // answer, and passes what happened to done on the model's thread.
    void applySchedule(ScanSchedule schedule, ScanSchedule::Frequency frequency,
                       std::function<void(ScanSchedule::Outcome)> done);

    // Cancels the kept scan task, if any, and starts a new one that it keeps.
    void startScan();
    // One scan that is not kept as the scan task, so cancelScan does not reach it.
    void scan(Closure done = {});
    void cancelScan();
    void clearResults();

    void toggle(const std::string& id);
    // The targets whose id is selected, in the order of targets; unknown ids are ignored.
    std::vector<CleanTarget> selectedTargets() const;

    // Without a gate nothing happens (done still runs). Sets updateRequired on every call.
    void checkMinimumVersion(Closure done = {});
    // Cleans the selected targets with the active domain's service (path targets of the
    // families its environment movesToTrash go into the desktop trash), publishes the report
    // and drops the deleted and partly deleted targets from the list and the selection.
    void run(bool dryRun, bool force, Closure done = {});

private:
    // Hands a change to the model on the user-interface thread; dropped once the model is gone.
    using Reply = std::function<void(std::function<void(AppModel&)>)>;

    template <class T>
    void publish(Field field, T& slot, T value);  // tells observers in any case
    template <class T>
    void publishChange(Field field, T& slot, T value);  // only when the value differs
    void notify(Field field);
    Reply replyToModel() const;
    // Work made by makeWork from a copy of the active domain's service.
    template <class MakeWork>
    Closure forActiveService(MakeWork makeWork) const;
    void scanUntil(std::stop_token stop, Closure done);
    void finishScan(std::uint64_t scan, const std::stop_token& stop, std::optional<ScanResult> found);
    void finishRun(ExecutionReport report);
    const std::filesystem::path& home() const { return clean_.env.home; }

    Dispatcher toUserInterface_;
    AppModelDependencies dependencies_;
    std::shared_ptr<AppModel*> self_;

    Domain domain_ = Domain::clean;
    std::vector<CleanTarget> targets_;
    std::set<std::string> selectedIDs_;
    std::vector<std::string> notes_;
    Phase phase_ = Phase::idle;
    std::optional<ExecutionReport> lastReport_;
    std::optional<DiskSpace> disk_;
    bool updateRequired_ = false;
    bool scanned_ = false;

    CleanService clean_;
    PrepareService prepare_;
    std::optional<VersionGate> versionGate_;
    std::optional<std::stop_source> scanTask_;
    std::uint64_t scansStarted_ = 0;  // the newest scan's number; it alone moves the phase at its end

    std::map<std::size_t, Observer> observers_;
    std::size_t nextObserverID_ = 0;
};

}  // namespace kelvo
