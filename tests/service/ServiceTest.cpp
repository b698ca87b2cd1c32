#include <gtest/gtest.h>

#include <algorithm>

#include "kelvo/CleanService.h"
#include "kelvo/Config.h"
#include "kelvo/L10n.h"
#include "kelvo/PrepareService.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/NamedProcess.h"
#include "support/ScopedEnvironment.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using Ids = std::vector<std::string>;
using namespace std::chrono_literals;

struct CleanServiceOnFakeHome : ::testing::Test {
    void SetUp() override {
        writeFile(home / "Library/Developer/Xcode/DerivedData/App/out.o", 8000);
        writeFile(home / ".gradle/caches/modules/a.jar", 8000);
        env.home = home.path();
        env.tmpDir = tmp.path();
        env.catalog = CatalogProfile::macos;
    }
    CleanService service() const {
        return {env, std::make_shared<StubProcessProbe>(), [](const std::string&, const ShellVariables&) { return 0; }};
    }
    const CleanTarget& offered(const ScanResult& scanned, const std::string& id) {
        const auto found = std::ranges::find(scanned.targets, id, &CleanTarget::id);
        if (found == scanned.targets.end()) throw std::runtime_error(id + " not offered");
        return *found;
    }
    TempDir home, tmp;
    // An empty PATH: no command entry finds its tool, so the machine's tools stay out of the results.
    ScopedEnvironment emptyPath{{{"PATH", tmp.path().string()}}};
    Environment env;
};

std::set<Family> familiesOf(const std::vector<CleanTarget>& targets) {
    std::set<Family> families;
    for (const auto& target : targets) families.insert(target.family);
    return families;
}

TEST_F(CleanServiceOnFakeHome, EnabledFamiliesFilterTheScanButNotTheDetection) {
    const std::set<Family> both{Family::xcodeCore, Family::androidGradle};
    EXPECT_TRUE(std::ranges::includes(familiesOf(service().scan().value().targets), both));
    env.enabledFamilies = std::set<Family>{Family::xcodeCore};
    EXPECT_EQ(familiesOf(service().scan().value().targets), std::set<Family>{Family::xcodeCore});
    env.enabledFamilies = std::set<Family>{};
    EXPECT_TRUE(service().enabledCleaners().empty());
    EXPECT_TRUE(service().scan()->targets.empty());
    EXPECT_TRUE(std::ranges::includes(service().detectFamilies().value(), both));
}

TEST_F(CleanServiceOnFakeHome, WhatTheGuardRefusesIsLeftOutWithANoteAndTheRestOfAGroupIsOfferedAndRemoved) {
    TempDir opt;
    const auto modules = [](const fs::path& project) {
        return writeFile(project / "node_modules/x/index.js", 8000).parent_path().parent_path();
    };
    const std::tuple<const char*, fs::path, bool> cases[] = {
        {"scan.note.excluded", home / "projects/b", true},
        {"scan.note.outsideAllowedRoots", opt / "c", false},
        {"scan.note.protected", home / ".android/avd/d", false},
    };
    for (const auto& [key, project, excluded] : cases) {
        SCOPED_TRACE(key);
        const auto kept = modules(home / "projects/a"), leftOut = modules(project);
        env.keepRecentDays = 0;
        env.projectRoots = {(home / "projects/a").string(), project.string()};
        env.extraExclusions = excluded ? Ids{project.string()} : Ids{};
        const auto scanned = service().scan().value();
        const auto& target = offered(scanned, "per-project-node_modules");
        EXPECT_EQ(std::pair(target.kind.pathList(), target.sizeBytes), std::pair(std::vector{kept}, allocatedBytesBelow(kept)));
        EXPECT_EQ(scanned.notes, std::vector{L10n::plural(key, 1, 1, leftOut.string())});
        EXPECT_EQ(service().clean({target}, false, false).deleted, Ids{target.id});
        EXPECT_FALSE(fs::exists(kept));
        EXPECT_TRUE(fs::exists(leftOut / "x/index.js"));
    }
}

TEST_F(CleanServiceOnFakeHome, TheNpmCacheStaysWhileNpmRunsUnlessForced) {
    // npm shows itself under its command ("npm install"), not its bare name.
    NamedProcess npm(tmp / "bin/npm install");
    ASSERT_GT(npm.pid(), 0);
    const auto others = std::make_shared<StubProcessProbe>(Ids{"bun", "deno", "node"});
    const std::tuple<std::shared_ptr<const ProcessProbe>, bool, bool> cases[] = {
        {liveProcessProbe(), false, false}, {liveProcessProbe(), true, true}, {others, false, true}};
    for (const auto& [probe, force, removed] : cases) {
        const auto cache = writeFile(home / ".npm/_cacache/index-v5/00/entry", 4096);
        const CleanService service{env, probe, {}};
        const auto report = service.clean({offered(service.scan().value(), "npm-cache")}, false, force);
        EXPECT_EQ(fs::exists(cache), !removed) << force;
        EXPECT_EQ(report.skipped.size(), removed ? 0u : 1u);
    }
}

struct PrepareOnFakeHome : ::testing::Test {
    PrepareService service(std::vector<std::string> running = {}) {
        return {.env = {.home = home, .tmpDir = root / "tmp", .catalog = CatalogProfile::macos},
                .probe = std::make_shared<StubProcessProbe>(running),
                .runCommand = [this](const std::string& line, const ShellVariables& variables) {
                    commands.emplace_back(line, variables);
                    return 0;
                },
                .now = utc(2025, 7, 1),
                .metadata = std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{{"Old.app", utc(2024, 1, 1)}}),
                .simLister = [] { return std::vector<SimRuntime>{{"R1", "iOS 16.0", 5000, true, utc(2024, 1, 1)}}; }};
    }
    TempDir root;
    fs::path home = root / "home";
    std::vector<std::pair<std::string, ShellVariables>> commands;
};

TEST_F(PrepareOnFakeHome, ScanRunsTheThreeDetectorsAndKeepsDataOfInstalledAppsEvenWhenTheirInfoPlistCannotBeRead) {
    const auto apps = home / "Applications";
    // The first bundle names its identifier in OpenStep text; the second one's cannot be read,
    // so data whose identifier may be that bundle's is kept too.
    writeText(apps / "First.app/Contents/Info.plist", "{ CFBundleIdentifier = com.x.Step; }");
    writeText(apps / "Mystery Editor.app/Contents/Info.plist", "this is not a property list");
    // An unused application's data goes with the application, not as a leftover.
    makeApp(apps, "Old", {.bundleID = "com.x.Old"});
    std::vector<fs::path> kept;
    for (const std::string id : {"com.x.Step", "com.vendor.MysteryEditor", "com.x.Old"})
        kept.push_back(writeFile(home / "Library/Caches" / id / "db", 4096));
    const auto gone = writeFile(home / "Library/Caches/com.gone.Old/db", 4096).parent_path();
    auto prepare = service();
    prepare.appIndexDirs = std::vector<fs::path>{apps};
    const auto targets = prepare.scan().value().targets;
    EXPECT_EQ(idSetOf(targets), (std::set<std::string>{"app:com.x.Old", "leftover:com.gone.Old", "sim-runtime:R1"}));
    std::vector<CleanTarget> leftovers;
    std::ranges::copy_if(targets, std::back_inserter(leftovers), [](auto& t) { return t.family == Family::appLeftovers; });
    EXPECT_EQ(prepare.clean(leftovers, false, false).deleted, Ids{"leftover:com.gone.Old"});
    EXPECT_FALSE(fs::exists(gone));
    for (const auto& file : kept) EXPECT_TRUE(fs::exists(file)) << file;
}

// A clean goes through the service's guard, probe and command runner, with the run's flags.
TEST_F(PrepareOnFakeHome, CleanUsesTheServicesGuardProbeAndCommandRunner) {
    const auto leftover = writeFile(home / "Library/Caches/com.gone.Editor/db", 4096).parent_path();
    const auto kept = writeFile(home / "Library/Caches/com.kept.App/db", 4096);
    const auto inTmp = writeFile(root / "tmp/com.gone.Editor/db", 4096).parent_path();
    const auto inHome = targetOf("leftover:com.gone.Editor", CleanKind::paths({leftover}), 4096, Family::appLeftovers);
    const auto outside = targetOf("leftover:com.tmp.Thing", CleanKind::paths({inTmp}), 4096, Family::appLeftovers);
    const auto runtime = targetOf("sim-runtime:R1", CleanKind::command("xcrun simctl runtime delete R1"), 5000, Family::simulators);
    const auto prepare = service({"Simulator"});
    const auto dryRun = prepare.clean({inHome, outside}, true, false);
    EXPECT_EQ(std::pair(dryRun.deleted, dryRun.freedBytes), std::pair(Ids{inHome.id}, std::int64_t{4096}));
    EXPECT_TRUE(fs::exists(leftover / "db"));
    const auto report = prepare.clean({inHome, outside, runtime}, false, false);
    EXPECT_EQ(report.deleted, Ids{inHome.id});
    EXPECT_EQ(report.skipped, (std::vector<ReportEntry>{{outside.id, {Reason::Code::protectedPath, inTmp.string()}},
                                                        {runtime.id, {Reason::Code::processRunning, "Simulator"}}}));
    EXPECT_FALSE(fs::exists(leftover));
    EXPECT_TRUE(fs::exists(kept) && fs::exists(inTmp / "db"));
    EXPECT_TRUE(commands.empty());
    const auto forced = prepare.clean({runtime}, false, true);
    EXPECT_EQ(std::pair(forced.deleted, forced.freedUnknown), std::pair(Ids{runtime.id}, Ids{runtime.id}));
    // The command runs with the environment's own folders, not with those Kelvo was started with.
    EXPECT_EQ(commands, (std::vector<std::pair<std::string, ShellVariables>>{
                            {"xcrun simctl runtime delete R1", {{"HOME", home.string()}, {"TMPDIR", (root / "tmp").string()}}}}));
}

// Services and the executor given null dependencies use the live ones, never calling through a null.
TEST(LiveDefaults, CleanServiceAndExecutorRunCommandsThroughTheShell) {
    TempDir home;
    const ScopedEnvironment path(ScopedEnvironment::Values{{"PATH", "/usr/bin:/bin"}});
    const auto marker = home / "ran";
    const auto command = targetOf("touch", CleanKind::command("touch '" + marker.string() + "'"));
    const CleanService service{.env = Environment::fromConfig(home.path(), home / "tmp", Config::defaults()), .probe = nullptr,
                               .runCommand = nullptr};
    EXPECT_EQ(service.clean({command}, false, false).deleted, Ids{"touch"});
    EXPECT_TRUE(fs::exists(marker));
    fs::remove(marker);
    EXPECT_EQ((Executor{.safety = service.guard(), .runCommand = nullptr}.execute({command}).deleted), Ids{"touch"});
    EXPECT_TRUE(fs::exists(marker));
}

// Families narrow the scan only when no id is named, since an id may name any family.
TEST(CleanServiceNarrowing, FamiliesNarrowOnlyWithoutIds) {
    const std::set<Family> docker{Family::docker}, jvm{Family::jvm};
    const struct { std::set<Family> families; Ids ids; std::set<Family> expected; } cases[] = {
        {{}, {}, jvm}, {docker, {}, docker}, {docker, {"some.id"}, jvm}, {{}, {"some.id"}, jvm}};
    CleanService configured{.env = {}};
    configured.env.enabledFamilies = jvm;
    for (const auto& c : cases)
        EXPECT_EQ(configured.narrowedTo(c.families, c.ids).env.enabledFamilies, c.expected)
            << c.families.size() << " families, " << c.ids.size() << " ids";
}

}  // namespace
}  // namespace kelvo::testing
