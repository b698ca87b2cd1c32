#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "kelvo/CleanService.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/Config.h"
#include "kelvo/L10n.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/PrepareService.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/NamedProcess.h"
#include "support/ScopedEnvironment.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::TempDir;
using testing::utc;
using testing::idSetOf;
using namespace std::chrono_literals;

class CleanServiceOnFakeHome : public ::testing::Test {
protected:
    void SetUp() override {
        testing::writeFile(home / "Library/Developer/Xcode/DerivedData/App/out.o", 8000);
        testing::writeFile(home / ".gradle/caches/modules/a.jar", 8000);
        env.home = home.path();
        env.tmpDir = tmp.path();
        env.projectRoots = {};
        env.catalog = CatalogProfile::macos;
    }

    CleanService service() const {
        return CleanService{env, std::make_shared<StubProcessProbe>(), [](const std::string&, const ShellVariables&) { return 0; }};
    }

    TempDir home;
    TempDir tmp;
    // An empty PATH: no command entry finds its tool, so the machine's tools stay out of the results.
    testing::ScopedEnvironment emptyPath{{{"PATH", tmp.path().string()}}};
    Environment env;
};

std::set<Family> familiesOf(const std::vector<CleanTarget>& targets) {
    std::set<Family> families;
    for (const auto& target : targets) families.insert(target.family);
    return families;
}

TEST_F(CleanServiceOnFakeHome, EnabledFamiliesFilterTheScanButNotTheDetection) {
    const auto all = service().scan();
    ASSERT_TRUE(all);
    EXPECT_TRUE(familiesOf(all->targets).contains(Family::xcodeCore));
    EXPECT_TRUE(familiesOf(all->targets).contains(Family::androidGradle));

    env.enabledFamilies = std::set<Family>{Family::xcodeCore};
    const auto onlyXcode = service().scan();
    ASSERT_TRUE(onlyXcode);
    EXPECT_EQ(familiesOf(onlyXcode->targets), std::set<Family>{Family::xcodeCore});

    env.enabledFamilies = std::set<Family>{};
    EXPECT_TRUE(service().enabledCleaners().empty());
    EXPECT_TRUE(service().scan()->targets.empty());
    const auto detected = service().detectFamilies();
    ASSERT_TRUE(detected);
    EXPECT_TRUE(detected->contains(Family::xcodeCore));
    EXPECT_TRUE(detected->contains(Family::androidGradle));
}

TEST_F(CleanServiceOnFakeHome, GuardAllowsHomeAndTemporaryFolderAndTheFlutterBinFolderOnlyWhenKnown) {
    auto guard = service().guard();
    ASSERT_EQ(guard.allowedRoots.size(), 2u);
    EXPECT_EQ(guard.allowedRoots[0], home.path());
    EXPECT_EQ(guard.allowedRoots[1], tmp.path());
    EXPECT_EQ(guard.protectedPaths, CleanerRegistry::protectedPaths(env));
    env.flutterBinCache = "/opt/flutter/bin/cache";
    guard = service().guard();
    ASSERT_EQ(guard.allowedRoots.size(), 3u);
    EXPECT_EQ(guard.allowedRoots[2], std::filesystem::path("/opt/flutter/bin"));
}

const CleanTarget& withID(const ScanResult& scanned, const std::string& id) {
    const auto found = std::ranges::find(scanned.targets, id, &CleanTarget::id);
    if (found == scanned.targets.end()) throw std::runtime_error(id + " not offered");
    return *found;
}

TEST_F(CleanServiceOnFakeHome, WhatTheGuardRefusesIsLeftOutWithANoteAndTheRestOfAGroupIsOfferedAndRemoved) {
    TempDir opt;
    const auto modules = [](const std::filesystem::path& project) {
        return testing::writeFile(project / "node_modules/x/index.js", 8000).parent_path().parent_path();
    };
    const std::tuple<const char*, std::filesystem::path, bool> cases[] = {
        {"scan.note.excluded", home / "projects/b", true},
        {"scan.note.outsideAllowedRoots", opt / "c", false},
        {"scan.note.protected", home / ".android/avd/d", false},
    };
    for (const auto& [key, project, excluded] : cases) {
        const auto kept = modules(home / "projects/a");
        const auto leftOut = modules(project);
        env.keepRecentDays = 0;
        env.projectRoots = {(home / "projects/a").string(), project.string()};
        env.extraExclusions = excluded ? std::vector<std::string>{project.string()} : std::vector<std::string>{};
        const auto scanned = service().scan();
        ASSERT_TRUE(scanned);
        const auto& offered = withID(*scanned, "per-project-node_modules");
        EXPECT_EQ(offered.kind.pathList(), std::vector{kept}) << key;
        EXPECT_EQ(offered.sizeBytes, testing::allocatedBytesBelow(kept));
        EXPECT_EQ(scanned->notes, std::vector{L10n::plural(key, 1, 1, leftOut.string())});
        EXPECT_EQ(service().clean({offered}, false, false).deleted, std::vector{offered.id});
        EXPECT_FALSE(std::filesystem::exists(kept));
        EXPECT_TRUE(std::filesystem::exists(leftOut / "x/index.js"));
    }
}

TEST_F(CleanServiceOnFakeHome, TheNpmCacheStaysWhileNpmRunsUnlessForced) {
    // npm shows itself under its command ("npm install"), not its bare name.
    testing::NamedProcess npm(tmp / "bin/npm install");
    ASSERT_GT(npm.pid(), 0);
    const auto others = std::make_shared<StubProcessProbe>(std::vector<std::string>{"bun", "deno", "node"});
    const std::tuple<std::shared_ptr<const ProcessProbe>, bool, bool> cases[] = {
        {liveProcessProbe(), false, false}, {liveProcessProbe(), true, true}, {others, false, true}};
    for (const auto& [probe, force, removed] : cases) {
        const auto cache = testing::writeFile(home / ".npm/_cacache/index-v5/00/entry", 4096);
        const CleanService service{env, probe, {}};
        const auto scanned = service.scan();
        ASSERT_TRUE(scanned);
        const auto report = service.clean({withID(*scanned, "npm-cache")}, false, force);
        EXPECT_EQ(std::filesystem::exists(cache), !removed) << force;
        EXPECT_EQ(report.skipped.size(), removed ? 0u : 1u);
    }
}

struct CommandLog {
    std::vector<std::string> lines;
    std::vector<ShellVariables> variables;
};

PrepareService serviceFor(const std::filesystem::path& home, const std::filesystem::path& tmpDir,
                          std::shared_ptr<CommandLog> log = std::make_shared<CommandLog>(),
                          std::vector<std::string> running = {}) {
    PrepareService service;
    service.env.home = home;
    service.env.tmpDir = tmpDir;
    service.env.catalog = CatalogProfile::macos;
    service.probe = std::make_shared<StubProcessProbe>(running);
    service.runCommand = [log](const std::string& line, const ShellVariables& variables) {
        log->lines.push_back(line);
        log->variables.push_back(variables);
        return 0;
    };
    service.now = utc(2025, 7, 1);
    service.metadata = std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{{"Old.app", utc(2024, 1, 1)}});
    service.simLister = [] { return std::vector<SimRuntime>{{"R1", "iOS 16.0", 5000, true, utc(2024, 1, 1)}}; };
    return service;
}


TEST(PrepareService, ScanRunsTheThreeDetectorsAndKeepsDataOfInstalledAppsEvenWhenTheirInfoPlistCannotBeRead) {
    TempDir root;
    const auto home = root / "home";
    const auto apps = home / "Applications";
    // The first bundle names its identifier in OpenStep text; the second one's cannot be read,
    // so data whose identifier may be that bundle's is kept too.
    testing::writeText(apps / "First.app/Contents/Info.plist", "{ CFBundleIdentifier = com.x.Step; }");
    testing::writeText(apps / "Mystery Editor.app/Contents/Info.plist", "this is not a property list");
    // An unused application's data goes with the application, not as a leftover.
    testing::FakeApp old;
    old.bundleID = "com.x.Old";
    testing::makeApp(apps, "Old", old);
    std::vector<std::filesystem::path> kept;
    for (const std::string id : {"com.x.Step", "com.vendor.MysteryEditor", "com.x.Old"})
        kept.push_back(testing::writeFile(home / "Library/Caches" / id / "db", 4096));
    const auto gone = testing::writeFile(home / "Library/Caches/com.gone.Old/db", 4096).parent_path();

    auto service = serviceFor(home, root / "tmp");
    service.appIndexDirs = std::vector<std::filesystem::path>{apps};
    const auto scanned = service.scan();
    ASSERT_TRUE(scanned);
    const auto* targets = &scanned->targets;
    EXPECT_EQ(idSetOf(*targets), (std::set<std::string>{"app:com.x.Old", "leftover:com.gone.Old", "sim-runtime:R1"}));
    std::vector<CleanTarget> leftovers;
    for (const auto& target : *targets)
        if (target.family == Family::appLeftovers) leftovers.push_back(target);
    EXPECT_EQ(service.clean(leftovers, false, false).deleted, (std::vector<std::string>{"leftover:com.gone.Old"}));
    EXPECT_FALSE(std::filesystem::exists(gone));
    for (const auto& file : kept) EXPECT_TRUE(std::filesystem::exists(file)) << file;
}

TEST(PrepareService, GuardAllowsHomeAndApplicationsButNotTheTemporaryDirectory) {
    const auto service = serviceFor("/home/u", "/var/tmp/u");
    const auto guard = service.guard();
    EXPECT_EQ(guard.home, "/home/u");
    EXPECT_EQ(guard.allowedRoots, (std::vector<std::filesystem::path>{"/home/u", "/Applications"}));
    EXPECT_EQ(guard.protectedPaths, PrepareRegistry::prepareProtectedPaths(service.env));

    auto withFlutter = service;
    withFlutter.env.flutterBinCache = "/opt/flutter/bin/cache";
    EXPECT_EQ(withFlutter.guard().allowedRoots,
              (std::vector<std::filesystem::path>{"/home/u", "/Applications", "/opt/flutter/bin"}));
}

TEST(PrepareService, CleanRemovesInsideHomeAndRefusesTheTemporaryDirectory) {
    TempDir root;
    const auto home = root / "home";
    const auto tmp = root / "tmp";
    const auto leftover = testing::writeFile(home / "Library/Caches/com.gone.Editor/db", 4096).parent_path();
    const auto kept = testing::writeFile(home / "Library/Caches/com.kept.App/db", 4096);
    const auto inTmp = testing::writeFile(tmp / "com.gone.Editor/db", 4096).parent_path();
    const auto inHome = testing::targetOf("leftover:com.gone.Editor", CleanKind::paths({leftover}), 4096, Family::appLeftovers);
    const auto outside = testing::targetOf("leftover:com.tmp.Thing", CleanKind::paths({inTmp}), 4096, Family::appLeftovers);

    const auto service = serviceFor(home, tmp);
    const auto dryRun = service.clean({inHome, outside}, true, false);
    EXPECT_EQ(dryRun.deleted, (std::vector<std::string>{"leftover:com.gone.Editor"}));
    EXPECT_EQ(dryRun.freedBytes, 4096);
    EXPECT_TRUE(std::filesystem::exists(leftover / "db"));

    const auto report = service.clean({inHome, outside}, false, false);
    EXPECT_EQ(report.deleted, (std::vector<std::string>{"leftover:com.gone.Editor"}));
    ASSERT_EQ(report.skipped.size(), 1u);
    EXPECT_EQ(report.skipped[0], (ReportEntry{"leftover:com.tmp.Thing", {Reason::Code::protectedPath, inTmp.string()}}));
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_TRUE(std::filesystem::exists(kept));
    EXPECT_TRUE(std::filesystem::exists(inTmp / "db"));
}

TEST(PrepareService, CleanUsesTheServicesProbeAndCommandRunner) {
    TempDir root;
    auto log = std::make_shared<CommandLog>();
    const auto service = serviceFor(root / "home", root / "tmp", log, {"Simulator"});
    const auto runtime =
        testing::targetOf("sim-runtime:R1", CleanKind::command("xcrun simctl runtime delete R1"), 5000, Family::simulators);

    const auto guarded = service.clean({runtime}, false, false);
    EXPECT_EQ(guarded.skipped, (std::vector<ReportEntry>{{"sim-runtime:R1", {Reason::Code::processRunning, "Simulator"}}}));
    EXPECT_TRUE(log->lines.empty());

    const auto forced = service.clean({runtime}, false, true);
    EXPECT_EQ(forced.deleted, (std::vector<std::string>{"sim-runtime:R1"}));
    EXPECT_EQ(forced.freedUnknown, (std::vector<std::string>{"sim-runtime:R1"}));
    EXPECT_EQ(log->lines, (std::vector<std::string>{"xcrun simctl runtime delete R1"}));
    // The command runs with the environment's own folders, not with those Kelvo was started with.
    EXPECT_EQ(log->variables, (std::vector<ShellVariables>{
                                  {{"HOME", (root / "home").string()}, {"TMPDIR", (root / "tmp").string()}}}));
}

// Services built with their dependencies left out, or given as null, use the live ones:
// over a fake home they scan and clean like the tool does, and never call through a null.
TEST(LiveDefaults, PrepareServiceScansAndCleansAFakeHome) {
    testing::TempDir root;
    const auto home = root / "home";
    auto env = Environment::fromConfig(home, root / "tmp", Config::defaults());
    env.catalog = CatalogProfile::macos;  // the profile whose detectors read application bundles
    // Without a metadata tool the live source falls back to modification dates.
    testing::FakeApp old;
    old.bundleID = "com.x.Old";
    const auto oldApp = testing::makeApp(home / "Applications", "Old", old);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(oldApp))
        testing::setModificationTime(entry.path(), std::chrono::system_clock::now() - 400 * 24h);
    testing::setModificationTime(oldApp, std::chrono::system_clock::now() - 400 * 24h);
    const auto leftover = testing::writeFile(home / "Library/Caches/com.gone.Editor/db", 4096).parent_path();

    PrepareService leftOut;
    leftOut.env = env;
    auto givenNull = leftOut;
    givenNull.probe = nullptr;
    givenNull.runCommand = nullptr;
    givenNull.metadata = nullptr;
    givenNull.simLister = nullptr;
    for (const auto* service : {&leftOut, &givenNull}) {
        const auto scanned = service->scan();
        ASSERT_TRUE(scanned);
        const auto ids = testing::idSetOf(scanned->targets);
        EXPECT_TRUE(ids.contains("app:com.x.Old") && ids.contains("leftover:com.gone.Editor"))
            << ::testing::PrintToString(ids);
    }

    const auto target = testing::targetOf("leftover:com.gone.Editor", CleanKind::paths({leftover}), 4096, Family::appLeftovers);
    EXPECT_EQ(givenNull.clean({target}, false, false).deleted, std::vector<std::string>{target.id});
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_TRUE(std::filesystem::exists(oldApp / "Contents/Info.plist"));
}

TEST(LiveDefaults, CleanServiceAndExecutorRunCommandsThroughTheShell) {
    testing::TempDir home;
    const testing::ScopedEnvironment path(testing::ScopedEnvironment::Values{{"PATH", "/usr/bin:/bin"}});
    const auto marker = home / "ran";
    const auto command = testing::targetOf("touch", CleanKind::command("touch '" + marker.string() + "'"));
    CleanService service;
    service.env = Environment::fromConfig(home.path(), home / "tmp", Config::defaults());
    service.probe = nullptr;
    service.runCommand = nullptr;
    EXPECT_EQ(service.clean({command}, false, false).deleted, std::vector<std::string>{"touch"});
    EXPECT_TRUE(std::filesystem::exists(marker));

    std::filesystem::remove(marker);
    Executor executor;
    executor.safety = service.guard();
    executor.runCommand = nullptr;
    EXPECT_EQ(executor.execute({command}).deleted, std::vector<std::string>{"touch"});
    EXPECT_TRUE(std::filesystem::exists(marker));
}

// Families narrow the scan only when no id is named, since an id may name any family.
TEST(CleanServiceNarrowing, FamiliesNarrowOnlyWithoutIds) {
    using Families = std::optional<std::set<Family>>;
    const std::set<Family> docker{Family::docker};
    struct Case {
        std::set<Family> families;
        std::vector<std::string> ids;
        Families expected;
    };
    const Case cases[] = {{{}, {}, Families{{Family::jvm}}},
                          {docker, {}, docker},
                          {docker, {"some.id"}, Families{{Family::jvm}}},
                          {{}, {"some.id"}, Families{{Family::jvm}}}};
    CleanService configured{.env = {}};
    configured.env.enabledFamilies = std::set<Family>{Family::jvm};
    for (const auto& c : cases)
        EXPECT_EQ(configured.narrowedTo(c.families, c.ids).env.enabledFamilies, c.expected)
            << c.families.size() << " families, " << c.ids.size() << " ids";
}

}  // namespace
}  // namespace kelvo
