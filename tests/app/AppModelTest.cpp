// The application model over real services on a fake home, with stub probes, runtimes
// and commands. Background work and the user-interface thread are queues the tests run
// by hand, so every interleaving below is chosen, not raced; one test uses real threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "kelvo/AppModel.h"
#include "kelvo/Config.h"
#include "app/InMemoryStore.h"
#include "support/ClosureQueue.h"
#include "support/StubServices.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using Field = AppModel::Field;
using Phase = AppModel::Phase;
using testing::idsOf;
using testing::utc;
using Ids = std::vector<std::string>;

SimRuntime runtime(const std::string& id, std::int64_t size) { return {id, "iOS " + id, size, true, utc(2024, 1, 1)}; }

class AppModelTest : public ::testing::Test {
protected:
    AppServices services(const Environment& env) const {
        return testing::stubServices(env, [runtimes = runtimes] { return *runtimes; });
    }

    // A model of the prepare domain, whose runtimes the test chooses.
    std::unique_ptr<AppModel> makeModel(std::optional<VersionGate> gate = std::nullopt, bool realThreads = false) {
        const AppModelDependencies dependencies{
            realThreads ? AppModelDependencies::ownThreads() : background.poster(),
            [this] {
                auto env = Environment::fromConfig(home.path(), home.path(), Config::load(home.path()));
                env.catalog = CatalogProfile::macos;  // the fake home is laid out as on macOS
                return env;
            },
            [this](const Environment& env) { return services(env); },
            [this](const std::filesystem::path& at) { return at == home.path() ? std::optional(DiskSpace{1000, ++diskReads}) : std::nullopt; }};
        const auto built = services(dependencies.loadEnvironment());
        auto model = std::make_unique<AppModel>(ui.poster(), built.clean, built.prepare, std::move(gate), dependencies);
        model->setDomain(AppModel::Domain::prepare);
        model->observe([this](Field field) { told.push_back(field); });
        return model;
    }

    // Runs the queued background work in order, then the replies it posted.
    void finishWork() {
        for (auto& work : background.takeAll()) work();
        ui.runAll();
    }

    testing::TempDir home;
    testing::ClosureQueue ui;
    testing::ClosureQueue background;
    std::shared_ptr<std::vector<SimRuntime>> runtimes = std::make_shared<std::vector<SimRuntime>>();
    std::vector<Field> told;
    std::int64_t diskReads = 0;
};

TEST_F(AppModelTest, PhaseFollowsScansCancellationsAndRuns) {
    // s: startScan, c: cancelScan, x: clearResults, r: run, w: finish the queued work.
    const std::pair<std::string, Phase> rows[] = {
        {"s", Phase::scanning}, {"sw", Phase::idle},     {"sc", Phase::idle},      {"sx", Phase::idle},
        {"scw", Phase::idle},   {"r", Phase::cleaning},  {"rw", Phase::done},      {"rwc", Phase::done},
        {"rwx", Phase::done},   {"rws", Phase::scanning}, {"rwsw", Phase::idle},   {"srw", Phase::done},
    };
    for (const auto& [steps, expected] : rows) {
        auto model = makeModel();
        for (const char step : steps) {
            if (step == 's') model->startScan();
            if (step == 'c') model->cancelScan();
            if (step == 'x') model->clearResults();
            if (step == 'r') model->run(false, false);
            if (step == 'w') finishWork();
        }
        EXPECT_EQ(model->phase(), expected) << steps;
        if (steps == "rw") {  // nothing was selected: an empty report
            EXPECT_TRUE(model->lastReport() && model->lastReport()->deleted.empty() && !model->lastReport()->freedBytes);
        }
        background.takeAll();
        ui.takeAll();
    }
}

TEST_F(AppModelTest, LiveConstructionBuildsServicesFromTheEnvironmentTheGateAndTheDiskFigure) {
    Environment env;
    env.home = home.path();
    const AppModel model(ui.poster(), env, {.makeServices = [this](const Environment& env) { return services(env); },
                                            .measureDisk = [](const std::filesystem::path&) { return DiskSpace{10, 5}; }});
    EXPECT_EQ(model.prepareService().env.home, home.path());
    EXPECT_EQ(model.disk(), (DiskSpace{10, 5}));
    ASSERT_TRUE(model.versionGate());
}

TEST_F(AppModelTest, ScanPublishesLargestFirstKeepingTheServicesOrderForEqualSizesAndRunsTrashLeftovers) {
    testing::writeFile(home / "Library/Caches/com.gone.Editor/db", 20000);
    *runtimes = {runtime("a", 5000), runtime("b", 9000), runtime("c", 9000), runtime("d", 1000)};
    auto model = makeModel();
    model->startScan();
    finishWork();
    EXPECT_EQ(idsOf(model->targets()),
              (Ids{"leftover:com.gone.Editor", "sim-runtime:b", "sim-runtime:c", "sim-runtime:a", "sim-runtime:d"}));
    EXPECT_EQ(model->selectedIDs(), std::set<std::string>{"leftover:com.gone.Editor"});  // runtimes are aggressive
    EXPECT_EQ(model->disk(), (DiskSpace{1000, 1}));
    EXPECT_EQ(told, (std::vector<Field>{Field::phase, Field::targets, Field::selectedIDs, Field::disk, Field::phase}));
    EXPECT_EQ(model->summary().byFamily.at(Family::simulators), 24000);

    model->setSelectedIDs({"sim-runtime:d", "ghost", "sim-runtime:b"});
    EXPECT_EQ(idsOf(model->selectedTargets()), (Ids{"sim-runtime:b", "sim-runtime:d"}));
    model->toggle("sim-runtime:a");
    model->toggle("sim-runtime:a");
    EXPECT_EQ(model->selectedIDs(), (std::set<std::string>{"sim-runtime:d", "ghost", "sim-runtime:b"}));

    // Leftovers go to the trash until the settings choose otherwise.
    model->setSelectedIDs({"leftover:com.gone.Editor"});
    model->run(false, false);
    finishWork();
    EXPECT_TRUE(std::filesystem::exists(home / ".local/share/Trash/files/com.gone.Editor/db"));
    EXPECT_GE(model->lastReport()->trashedBytes, 20000);
}

TEST_F(AppModelTest, CancelledScansPublishNothingButThePhase) {
    auto model = makeModel();
    model->startScan();
    auto superseded = background.takeAll();
    model->startScan();
    auto current = background.takeAll();
    *runtimes = {runtime("superseded", 20)};
    superseded[0]();
    *runtimes = {runtime("current", 30)};
    current[0]();
    auto replies = ui.takeAll();
    ASSERT_EQ(replies.size(), 2u);
    told.clear();
    replies[0]();
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(model->phase(), Phase::scanning);  // the newer scan's
    replies[1]();
    EXPECT_EQ(idsOf(model->targets()), Ids{"sim-runtime:current"});
    EXPECT_EQ(model->phase(), Phase::idle);

    // Cancelled once its walk is over but before its reply runs: still cancelled.
    model->startScan();
    *runtimes = {runtime("late", 40)};
    for (auto& work : background.takeAll()) work();
    model->cancelScan();
    told.clear();
    ui.runAll();
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(idsOf(model->targets()), Ids{"sim-runtime:current"});
}

// Root removes everything, so the model runs as uid 65534 on a home handed over to it,
// with parts that stay root's: one leftover goes in part, one not at all.
TEST_F(AppModelTest, RunDropsDeletedAndPartlyDeletedTargetsAndKeepsTheRest) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "a home owned partly by root can only be built as root";
    const auto gone = testing::writeFile(home / "Library/Application Support/com.gone.Partial/data", 30000);
    const auto keptPart = testing::writeFile(home / "Library/Caches/com.gone.Partial/locked/held", 8000);
    const auto held = testing::writeFile(home / "Library/Caches/com.gone.Held/locked/held", 8000);
    ASSERT_FALSE(Config{.moveToTrash = false}.save(home.path()));  // leftovers otherwise go to the trash, whole
    testing::chownTree(home.path(), 65534, 65534);
    // Root's folder inside the user's leftover makes a partial removal; a leftover that is
    // root's as a whole is never offered.
    testing::chownTree(keptPart.parent_path(), 0, 0);
    testing::chownTree(held.parent_path().parent_path(), 0, 0);
    *runtimes = {runtime("ok", 700000), runtime("fail", 600000)};

    const auto run = testing::runAsUnprivileged([&] {
        auto model = makeModel();
        model->startScan();
        finishWork();
        const auto all = idsOf(model->targets());
        model->setSelectedIDs({all.begin(), all.end()});
        model->run(false, false);
        finishWork();
        std::string text;
        for (const auto& id : idsOf(model->targets())) text += id + " ";
        for (const auto& id : model->selectedIDs()) text += "| " + id + " ";
        return text + "| partial " + std::to_string(model->lastReport()->partial.size());
    });
    ASSERT_TRUE(run.output) << run.failure;
    EXPECT_EQ(*run.output, "sim-runtime:fail | sim-runtime:fail | partial 1");
    EXPECT_FALSE(std::filesystem::exists(gone.parent_path()));
    EXPECT_TRUE(std::filesystem::exists(keptPart) && std::filesystem::exists(held));
}

TEST_F(AppModelTest, OnboardingWritesTheSortedFamiliesOrNoListAndReloads) {
    auto model = makeModel();
    EXPECT_TRUE(model->needsOnboarding());
    ASSERT_FALSE(model->completeOnboarding(std::set<Family>{Family::xcodeCore, Family::docker}));
    EXPECT_FALSE(model->needsOnboarding());
    EXPECT_EQ(Config::load(home.path()).enabledFamilies, (Ids{"docker", "xcodeCore"}));
    EXPECT_EQ(model->cleanService().env.enabledFamilies, (std::set<Family>{Family::xcodeCore, Family::docker}));
    EXPECT_EQ(diskReads, 1);

    Config edited = Config::load(home.path());
    edited.projectRoots = {"~/code"};
    ASSERT_FALSE(edited.save(home.path()));
    ASSERT_FALSE(model->completeOnboarding(std::nullopt));
    EXPECT_EQ(Config::load(home.path()).projectRoots, Ids{"~/code"});
    EXPECT_FALSE(Config::load(home.path()).enabledFamilies);
    EXPECT_FALSE(model->prepareService().env.enabledFamilies);

    testing::writeText(Config::filePath(home.path()), "not json");
    EXPECT_FALSE(makeModel()->needsOnboarding());
}

TEST_F(AppModelTest, EveryMinimumVersionCheckSetsUpdateRequired) {
    auto answer = std::make_shared<std::optional<std::string>>();
    auto store = std::make_shared<InMemoryStore>(std::map<std::string, std::string>{{"minVersionCached", "2.0"}});
    auto model = makeModel(VersionGate("1.9", store, [answer] { return *answer; }));
    model->checkMinimumVersion();
    EXPECT_FALSE(model->updateRequired());
    finishWork();
    EXPECT_TRUE(model->updateRequired());
    *answer = R"({"minVersion": "1.0"})";
    model->checkMinimumVersion();
    finishWork();
    EXPECT_FALSE(model->updateRequired());

    bool finished = false;
    makeModel()->checkMinimumVersion([&] { finished = true; });
    EXPECT_TRUE(finished && background.takeAll().empty());
}

TEST_F(AppModelTest, WorkOnRealThreadsComesBackThroughTheDispatcher) {
    testing::writeFile(home / ".gradle/caches/modules/a.jar", 8000);
    *runtimes = {runtime("r", 5000)};
    auto model = makeModel(std::nullopt, true);
    model->startScan();
    ui.runNextWhenPosted();
    EXPECT_EQ(idsOf(model->targets()), Ids{"sim-runtime:r"});

    // A dry run reports what passes the checks as deleted, so it leaves the list too.
    model->setSelectedIDs({"sim-runtime:r"});
    model->run(true, false);
    ui.runNextWhenPosted();
    EXPECT_TRUE(model->targets().empty());
    EXPECT_EQ(model->phase(), Phase::done);

    std::set<Family> detected;
    model->detectCategories([&](std::set<Family> families) { detected = std::move(families); });
    ui.runNextWhenPosted();
    EXPECT_TRUE(detected.contains(Family::androidGradle));

    // The live dispatcher's threads are joined when it goes: no work outlives its owner.
    auto ended = std::make_shared<std::atomic<bool>>(false);
    AppModelDependencies{}.inBackground([ended] { std::this_thread::sleep_for(std::chrono::milliseconds(50)), ended->store(true); });
    EXPECT_TRUE(*ended);
}

}  // namespace
}  // namespace kelvo
