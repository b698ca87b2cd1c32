#include "kelvo/AppModel.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <mutex>
#include <thread>

#include "kelvo/Config.h"
#include "kelvo/PlanSelection.h"
#include "kelvo/ProjectDiscovery.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

AppServices AppServices::live(const Environment& env) {
    const auto probe = std::make_shared<LiveProcessProbe>();
    return AppServices{
        CleanService{env, probe, &Executor::shell},
        PrepareService{.env = env, .probe = probe, .runCommand = &Executor::shell,
                       .metadata = std::make_shared<LiveAppMetadata>(), .simLister = &SimRuntimeLister::live},
    };
}

namespace {

// One thread per piece of work; those that have ended are joined when the next starts, the
// rest when the owner goes.
class OwnThreads {
public:
    void start(Closure work) {
        const std::lock_guard lock(mutex_);
        std::erase_if(threads_, [](const Worker& worker) { return worker.ended->load(); });
        auto ended = std::make_shared<std::atomic<bool>>(false);
        threads_.push_back({ended, std::jthread([work = std::move(work), ended] {
                                work();
                                ended->store(true);
                            })});
    }

private:
    struct Worker {
        std::shared_ptr<std::atomic<bool>> ended;
        std::jthread thread;
    };
    std::mutex mutex_;
    std::list<Worker> threads_;
};

}  // namespace

Dispatcher AppModelDependencies::ownThreads() {
    return [threads = std::make_shared<OwnThreads>()](Closure work) { threads->start(std::move(work)); };
}

AppModel::AppModel(Dispatcher toUserInterface, CleanService clean, PrepareService prepare,
                   std::optional<VersionGate> versionGate, AppModelDependencies dependencies)
    : toUserInterface_(std::move(toUserInterface)),
      dependencies_(std::move(dependencies)),
      self_(std::make_shared<AppModel*>(this)),
      clean_(std::move(clean)),
      prepare_(std::move(prepare)),
      versionGate_(std::move(versionGate)) {}

AppModel::AppModel(Dispatcher toUserInterface, const Environment& env, AppModelDependencies dependencies)
    : AppModel(std::move(toUserInterface), CleanService{}, PrepareService{},
               VersionGate::enabledFor(Config::load(env.home)) ? std::optional(VersionGate()) : std::nullopt,
               std::move(dependencies)) {
    auto services = dependencies_.makeServices(env);
    clean_ = std::move(services.clean);
    prepare_ = std::move(services.prepare);
    refreshDisk();
}

AppModel::~AppModel() {
    // The abandoned walk may stop early; its result is dropped with self_.
    if (scanTask_) scanTask_->request_stop();
}

std::string_view AppModel::rawValue(Domain domain) { return domain == Domain::clean ? "clean" : "prepare"; }

std::size_t AppModel::observe(Observer observer) {
    observers_.emplace(nextObserverID_, std::move(observer));
    return nextObserverID_++;
}

void AppModel::stopObserving(std::size_t id) { observers_.erase(id); }

template <class T>
void AppModel::publish(Field field, T& slot, T value) {
    slot = std::move(value);
    notify(field);
}

template <class T>
void AppModel::publishChange(Field field, T& slot, T value) {
    if (slot == value) return;
    publish(field, slot, std::move(value));
}

void AppModel::notify(Field field) {
    // A copy: an observer may subscribe or leave while it is being told.
    std::vector<Observer> current;
    for (const auto& [id, observer] : observers_) current.push_back(observer);
    for (const auto& observer : current) observer(field);
}

AppModel::Reply AppModel::replyToModel() const {
    return [post = toUserInterface_, self = std::weak_ptr<AppModel*>(self_)](std::function<void(AppModel&)> apply) {
        post([self, apply = std::move(apply)] {
            if (const auto model = self.lock()) apply(**model);
        });
    };
}

namespace {

// The chosen targets of families that go to the trash in one run, the others in another,
// reported as one run.
template <class Service>
ExecutionReport cleanByTrashChoice(const Service& service, const std::vector<CleanTarget>& chosen, bool dryRun,
                                   bool force) {
    std::vector<CleanTarget> trashed;
    std::vector<CleanTarget> removed;
    for (const auto& target : chosen) (service.env.movesToTrash(target.family) ? trashed : removed).push_back(target);
    if (trashed.empty() || removed.empty()) return service.clean(chosen, dryRun, force, !trashed.empty());
    auto report = service.clean(removed, dryRun, force, false);
    report.append(service.clean(trashed, dryRun, force, true));
    return report;
}

}  // namespace

template <class MakeWork>
Closure AppModel::forActiveService(MakeWork makeWork) const {
    return domain_ == Domain::clean ? makeWork(clean_) : makeWork(prepare_);
}

void AppModel::setDomain(Domain domain) { publishChange(Field::domain, domain_, domain); }

void AppModel::setSelectedIDs(std::set<std::string> ids) {
    publishChange(Field::selectedIDs, selectedIDs_, std::move(ids));
}

bool AppModel::needsOnboarding() const { return !Config::exists(home()); }

void AppModel::refreshDisk() { publishChange(Field::disk, disk_, dependencies_.measureDisk(home())); }

void AppModel::reloadConfig() {
    auto services = dependencies_.makeServices(dependencies_.loadEnvironment());
    clean_ = std::move(services.clean);
    prepare_ = std::move(services.prepare);
    refreshDisk();
}

std::error_code AppModel::completeOnboarding(const std::optional<std::set<Family>>& enabledFamilies,
                                             const std::vector<std::string>& projectRoots) {
    Config config = Config::load(home());
    config.enabledFamilies.reset();
    if (enabledFamilies) {
        std::vector<std::string> names;
        for (const Family family : *enabledFamilies) names.emplace_back(kelvo::rawValue(family));
        std::ranges::sort(names);
        config.enabledFamilies = std::move(names);
    }
    if (!projectRoots.empty()) config.projectRoots = projectRoots;
    if (auto error = config.save(home())) return error;
    reloadConfig();
    return {};
}

void AppModel::detectCategories(std::function<void(std::set<Family>)> done,
                                const std::optional<std::vector<std::string>>& projectRoots) {
    CleanService service = clean_;
    if (projectRoots) {
        service.env.projectRoots = *projectRoots;
        service.env.foundProjectRoots.reset();
    }
    dependencies_.inBackground([service = std::move(service), reply = replyToModel(), done = std::move(done)] {
        const CleanService walked{ProjectDiscovery::completed(service.env), service.probe, service.runCommand};
        auto families = walked.detectFamilies().value_or(std::set<Family>{});
        // Projects build tomorrow what they do not hold today; the Linux profile only, where
        // the folders are found rather than assumed.
        if (walked.env.catalog == CatalogProfile::gnuLinux &&
            std::ranges::any_of(walked.env.resolvedProjectRoots(), [](const auto& root) { return platform::exists(root); }))
            families.insert(Family::perProject);
        reply([families = std::move(families), done](AppModel&) {
            if (done) done(families);
        });
    });
}

void AppModel::findProjectFolders(std::function<void(std::vector<std::filesystem::path>)> done) {
    dependencies_.inBackground([env = clean_.env, reply = replyToModel(), done = std::move(done)] {
        auto found = ProjectDiscovery::completed(env).foundProjectRoots.value_or(std::vector<std::filesystem::path>{});
        reply([found = std::move(found), done](AppModel&) {
            if (done) done(found);
        });
    });
}

void AppModel::applySchedule(ScanSchedule schedule, ScanSchedule::Frequency frequency,
                             std::function<void(ScanSchedule::Outcome)> done) {
    dependencies_.inBackground([schedule = std::move(schedule), frequency, reply = replyToModel(),
                                done = std::move(done)] {
        auto outcome = schedule.set(frequency);
        reply([outcome = std::move(outcome), done](AppModel&) {
            if (done) done(outcome);
        });
    });
}

void AppModel::startScan() {
    if (scanTask_) scanTask_->request_stop();
    scanTask_.emplace();
    scanUntil(scanTask_->get_token(), {});
}

void AppModel::scan(Closure done) { scanUntil(std::stop_token{}, std::move(done)); }

void AppModel::scanUntil(std::stop_token stop, Closure done) {
    publishChange(Field::phase, phase_, Phase::scanning);
    if (lastReport_) publish(Field::lastReport, lastReport_, std::optional<ExecutionReport>());
    const std::uint64_t number = ++scansStarted_;
    dependencies_.inBackground(forActiveService([&](const auto& service) {
        return Closure([service, stop, number, reply = replyToModel(), done = std::move(done)] {
            ScanOptions options;
            options.stop = stop;
            auto found = service.scan(options);
            if (found) found->targets = Reporter::largestFirst(std::move(found->targets));
            reply([number, stop, found = std::move(found), done](AppModel& model) mutable {
                model.finishScan(number, stop, std::move(found));
                if (done) done();
            });
        });
    }));
}

void AppModel::finishScan(std::uint64_t scan, const std::stop_token& stop,
                          std::optional<ScanResult> found) {
    // Asked here, on the user-interface thread, where every cancellation happens: a scan
    // cancelled after its walk ended is still cancelled.
    if (found && !stop.stop_requested()) {
        PlanSelection selection(std::move(found->targets));
        scanned_ = true;
        publish(Field::targets, targets_, std::move(selection.targets));
        publishChange(Field::selectedIDs, selectedIDs_, std::move(selection.selectedIDs));
        publishChange(Field::notes, notes_, std::move(found->notes));
        refreshDisk();
    }
    // A scan that a newer one replaced leaves the phase to that one.
    if (scan == scansStarted_ && phase_ == Phase::scanning) publishChange(Field::phase, phase_, Phase::idle);
}

void AppModel::cancelScan() {
    if (scanTask_) {
        scanTask_->request_stop();
        scanTask_.reset();
    }
    if (phase_ == Phase::scanning) publishChange(Field::phase, phase_, Phase::idle);
}

void AppModel::clearResults() {
    cancelScan();
    scanned_ = false;
    publish(Field::targets, targets_, std::vector<CleanTarget>());
    publishChange(Field::selectedIDs, selectedIDs_, std::set<std::string>());
    publishChange(Field::notes, notes_, std::vector<std::string>());
    if (lastReport_) publish(Field::lastReport, lastReport_, std::optional<ExecutionReport>());
}

void AppModel::toggle(const std::string& id) {
    if (!selectedIDs_.erase(id)) selectedIDs_.insert(id);
    notify(Field::selectedIDs);
}

std::vector<CleanTarget> AppModel::selectedTargets() const {
    std::vector<CleanTarget> chosen;
    for (const auto& target : targets_)
        if (selectedIDs_.contains(target.id)) chosen.push_back(target);
    return chosen;
}

void AppModel::checkMinimumVersion(Closure done) {
    if (!versionGate_) {
        if (done) done();
        return;
    }
    dependencies_.inBackground([gate = *versionGate_, reply = replyToModel(), done = std::move(done)] {
        const bool required = gate.check() == VersionStatus::mustUpdate;
        reply([required, done](AppModel& model) {
            model.publishChange(Field::updateRequired, model.updateRequired_, required);
            if (done) done();
        });
    });
}

void AppModel::run(bool dryRun, bool force, Closure done) {
    publishChange(Field::phase, phase_, Phase::cleaning);
    dependencies_.inBackground(forActiveService([&](const auto& service) {
        return Closure([service, chosen = selectedTargets(), dryRun, force, reply = replyToModel(),
                        done = std::move(done)] {
            auto report = cleanByTrashChoice(service, chosen, dryRun, force);
            reply([report = std::move(report), done](AppModel& model) mutable {
                model.finishRun(std::move(report));
                if (done) done();
            });
        });
    }));
}

void AppModel::finishRun(ExecutionReport report) {
    std::set<std::string> removed(report.deleted.begin(), report.deleted.end());
    removed.insert(report.partial.begin(), report.partial.end());
    publish(Field::lastReport, lastReport_, std::optional<ExecutionReport>(std::move(report)));
    auto kept = targets_;
    std::erase_if(kept, [&](const CleanTarget& target) { return removed.contains(target.id); });
    if (kept.size() != targets_.size()) publish(Field::targets, targets_, std::move(kept));
    auto selected = selectedIDs_;
    std::erase_if(selected, [&](const std::string& id) { return removed.contains(id); });
    publishChange(Field::selectedIDs, selectedIDs_, std::move(selected));
    refreshDisk();
    publishChange(Field::phase, phase_, Phase::done);
}

}  // namespace kelvo
