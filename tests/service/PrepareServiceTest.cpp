#include <gtest/gtest.h>

#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"
#include "kelvo/L10n.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/PrepareService.h"

namespace kelvo {
namespace {

using testing::TempDir;
using testing::utc;

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

using testing::idSetOf;

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
    const auto targets = service.scan();
    ASSERT_TRUE(targets);
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
    EXPECT_EQ(report.skipped[0], (ReportEntry{"leftover:com.tmp.Thing", L10n::t("exec.skip.protectedPath", inTmp.string())}));
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
    EXPECT_EQ(guarded.skipped, (std::vector<ReportEntry>{{"sim-runtime:R1", L10n::t("exec.skip.processRunning", std::string("Simulator"))}}));
    EXPECT_TRUE(log->lines.empty());

    const auto forced = service.clean({runtime}, false, true);
    EXPECT_EQ(forced.deleted, (std::vector<std::string>{"sim-runtime:R1"}));
    EXPECT_EQ(forced.freedUnknown, (std::vector<std::string>{"sim-runtime:R1"}));
    EXPECT_EQ(log->lines, (std::vector<std::string>{"xcrun simctl runtime delete R1"}));
    // The command runs with the environment's own folders, not with those Kelvo was started with.
    EXPECT_EQ(log->variables, (std::vector<ShellVariables>{
                                  {{"HOME", (root / "home").string()}, {"TMPDIR", (root / "tmp").string()}}}));
}

}  // namespace
}  // namespace kelvo
