#include <gtest/gtest.h>

#include "kelvo/DirectorySizer.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/UnusedAppDetector.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::idsOf;
using testing::TempDir;
using testing::utc;

const auto now = utc(2025, 7, 1);
const auto longAgo = utc(2020, 1, 1);

struct Scenario {
    std::vector<fs::path> appDirs;
    std::map<std::string, TimePoint> dates;
    std::vector<std::string> running = {};
    std::vector<std::string> runningFragments = {};
    int months = 6;
};

std::vector<CleanTarget> scan(const Scenario& scenario, const fs::path& home) {
    return UnusedAppDetector(scenario.appDirs, home, scenario.months, now, std::make_shared<StubAppMetadata>(scenario.dates),
                             std::make_shared<StubProcessProbe>(scenario.running, scenario.runningFragments),
                             PrepareRegistry::protectedBundleIDs(), PrepareRegistry::protectedNames())
        .scan();
}

fs::path makeApp(const fs::path& folder, const std::string& name, std::optional<std::string> bundleID,
                 std::optional<std::string> executable = std::nullopt) {
    testing::FakeApp app;
    app.bundleID = std::move(bundleID);
    app.executable = std::move(executable);
    return testing::makeApp(folder, name, app);
}

TEST(UnusedAppDetector, OffersApplicationsLastUsedStrictlyBeforeTheCutOffOfThirtyDayMonths) {
    struct Case {
        int months;
        TimePoint lastUsed;
        bool offered;
    };
    const std::vector<Case> cases{
        {6, utc(2025, 1, 1, 23, 59, 59), true}, {6, utc(2025, 1, 2), false}, {6, utc(2025, 6, 1), false},
        {0, now - 1s, true},                    {0, now, false},
    };
    for (const auto& [months, lastUsed, offered] : cases) {
        TempDir apps;
        makeApp(apps.path(), "A", "com.x.A");
        makeApp(apps.path(), "Undated", "com.x.Undated");
        const auto targets = scan({.appDirs = {apps.path()}, .dates = {{"A.app", lastUsed}}, .months = months}, apps / "home");
        EXPECT_EQ(idsOf(targets), offered ? std::vector<std::string>{"app:com.x.A"} : std::vector<std::string>{}) << months;
    }
}

TEST(UnusedAppDetector, TheTargetHoldsTheBundleThenItsDataOrTheBundleAloneWithoutAnIdentifier) {
    TempDir root;
    const auto home = root / "home";
    const auto bundle = makeApp(root / "Applications", "Old", "com.x.Old");
    const auto plain = makeApp(root / "Applications", "Plain", std::nullopt, "Plain");
    const auto caches = testing::writeFile(home / "Library/Caches/com.x.Old/db", 6000).parent_path();
    const auto preferences = testing::writeFile(home / "Library/Preferences/com.x.Old.plist", 300);
    // Data under the bundle's name is not the application's: without an identifier none is taken.
    testing::writeFile(home / "Library/Caches/Plain/db", 6000);
    const auto targets =
        scan({.appDirs = {root / "Applications"}, .dates = {{"Old.app", longAgo}, {"Plain.app", longAgo}}}, home);
    ASSERT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.x.Old", "app-path:" + plain.string()}));
    EXPECT_EQ(targets[0].kind, CleanKind::paths({bundle, caches, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(targets[0].sizeBytes, sizer.size(bundle) + sizer.size(caches) + sizer.size(preferences));
    EXPECT_EQ(targets[0].family, Family::unusedApps);
    EXPECT_EQ(targets[0].level, Level::aggressive);
    EXPECT_EQ(targets[0].regenCost, RegenCost::redownload);
    EXPECT_EQ(targets[1].kind, CleanKind::paths({plain}));
    EXPECT_EQ(targets[1].sizeBytes, sizer.size(plain));
}

TEST(UnusedAppDetector, ProtectedRunningHiddenAndNestedApplicationsAreNeverOffered) {
    TempDir root;
    const auto system = root / "Applications";
    const auto user = root / "home/Applications";
    std::map<std::string, TimePoint> dates;
    for (const auto& [folder, name, id] : std::vector<std::tuple<fs::path, std::string, std::string>>{
             {user, "Second", "com.x.Second"}, {system, "First", "com.x.First"}, {user / "Tools", "Nested", "com.x.Nested"},
             {system, ".Hidden", "com.x.Hidden"}, {system, "Docker", "com.example.docker"},
             {system, "SAFARI", "com.example.safari"}, {system, "Renamed IDE", "com.apple.dt.Xcode"},
             {system, "Running", "com.x.Running"}, {system, "Core", "com.x.Core"}, {system, "ByPath", "com.x.ByPath"}}) {
        makeApp(folder, name, id, name + "Core");
        dates[name + ".app"] = longAgo;
    }
    // Only the identifiers themselves count here, not their vendors: the executor refuses those.
    makeApp(system, "Keep", "com.google.Keep");
    dates["Keep.app"] = longAgo;
    fs::rename(makeApp(system / "upper", "Upper", "com.x.Upper"), system / "Upper.APP");
    dates["Upper.APP"] = longAgo;
    const auto targets =
        scan({.appDirs = {system, root / "missing", user},
              .dates = dates,
              .running = {"Running", "CoreCore", "Second Helper", "first"},
              .runningFragments = {(system / "ByPath.app/Contents/MacOS/ByPathCore").string() + " --background"}},
             root / "home");
    EXPECT_EQ(testing::idSetOf(targets), (std::set<std::string>{"app:com.google.Keep", "app:com.x.First", "app:com.x.Second"}));
    EXPECT_EQ(targets.back().id, "app:com.x.Second");  // the folders in their order
}

}  // namespace
}  // namespace kelvo
