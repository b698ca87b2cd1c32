#include <gtest/gtest.h>

#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TempDir.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/L10n.h"
#include "kelvo/MonthsBefore.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/UnusedAppDetector.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::FakeApp;
using testing::makeApp;
using testing::TempDir;
using testing::utc;

const auto now = utc(2025, 7, 1);
const auto longAgo = utc(2020, 1, 1);

struct Scenario {
    std::vector<std::filesystem::path> appDirs;
    std::filesystem::path home;
    std::map<std::string, TimePoint> dates;
    std::vector<std::string> running;
    std::vector<std::string> runningFragments;
    int months = 6;
};

UnusedAppDetector detectorFor(const Scenario& scenario) {
    return UnusedAppDetector(scenario.appDirs, scenario.home, scenario.months, now,
                             std::make_shared<StubAppMetadata>(scenario.dates),
                             std::make_shared<StubProcessProbe>(scenario.running, scenario.runningFragments),
                             PrepareRegistry::protectedBundleIDs(), PrepareRegistry::protectedNames());
}

std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    return ids;
}

TEST(UnusedAppDetector, IdentityOfTheDetector) {
    const auto detector = detectorFor({});
    EXPECT_EQ(detector.id(), "unused-apps");
    EXPECT_EQ(detector.name(), "Apps grandes sin usar");
    EXPECT_EQ(detector.family(), Family::unusedApps);
}

TEST(UnusedAppDetector, CutOffIsStrictAndCountsThirtyDayMonths) {
    EXPECT_EQ(monthsBefore(now, 6), utc(2025, 1, 2));
    TempDir apps;
    makeApp(apps.path(), "Before", {.bundleID = "com.x.Before"});
    makeApp(apps.path(), "AtCutOff", {.bundleID = "com.x.AtCutOff"});
    makeApp(apps.path(), "Recent", {.bundleID = "com.x.Recent"});
    makeApp(apps.path(), "Undated", {.bundleID = "com.x.Undated"});
    const auto targets = detectorFor({.appDirs = {apps.path()},
                                      .home = apps / "home",
                                      .dates = {{"Before.app", utc(2025, 1, 1, 23, 59, 59)},
                                                {"AtCutOff.app", utc(2025, 1, 2)},
                                                {"Recent.app", utc(2025, 6, 1)}}})
                             .scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.x.Before"}));
}

TEST(UnusedAppDetector, ZeroMonthsComparesAgainstNowItself) {
    TempDir apps;
    makeApp(apps.path(), "JustBefore", {.bundleID = "com.x.JustBefore"});
    makeApp(apps.path(), "Now", {.bundleID = "com.x.Now"});
    const auto targets = detectorFor({.appDirs = {apps.path()},
                                      .home = apps / "home",
                                      .dates = {{"JustBefore.app", now - 1s}, {"Now.app", now}},
                                      .months = 0})
                             .scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.x.JustBefore"}));
}

TEST(UnusedAppDetector, TargetHoldsTheBundleThenItsDataLocations) {
    TempDir root;
    const auto home = root / "home";
    const auto bundle = makeApp(root / "Applications", "Old", {.bundleID = "com.x.Old"});
    const auto caches = testing::writeFile(home / "Library/Caches/com.x.Old/db", 6000).parent_path();
    const auto preferences = testing::writeFile(home / "Library/Preferences/com.x.Old.plist", 300);
    const auto targets =
        detectorFor({.appDirs = {root / "Applications"}, .home = home, .dates = {{"Old.app", longAgo}}}).scan();
    ASSERT_EQ(targets.size(), 1u);
    const auto& target = targets[0];
    EXPECT_EQ(target.id, "app:com.x.Old");
    EXPECT_EQ(target.name, L10n::t("cleaner.unusedApp.target", std::string("Old")));
    EXPECT_EQ(target.family, Family::unusedApps);
    EXPECT_EQ(target.kind, CleanKind::paths({bundle, caches, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(target.sizeBytes, sizer.size(bundle) + sizer.size(caches) + sizer.size(preferences));
    EXPECT_GE(target.sizeBytes, 26300);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::redownload);
    EXPECT_EQ(target.level, Level::aggressive);
    EXPECT_EQ(target.notes, "Reinstalable. Borrado permanente de la app y sus datos.");
}

TEST(UnusedAppDetector, BundleWithoutIdentifierIsOfferedByPathAlone) {
    TempDir root;
    const auto home = root / "home";
    const auto bundle = makeApp(root / "Applications", "Old", {.executable = "Old", .encoding = testing::PlistEncoding::binary});
    // Data under the bundle's name is not the application's data: without an identifier none is taken.
    testing::writeFile(home / "Library/Caches/Old/db", 6000);
    const auto targets =
        detectorFor({.appDirs = {root / "Applications"}, .home = home, .dates = {{"Old.app", longAgo}}}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].id, "app-path:" + bundle.string());
    EXPECT_EQ(targets[0].kind, CleanKind::paths({bundle}));
    EXPECT_EQ(targets[0].sizeBytes, DirectorySizer().size(bundle));
}

TEST(UnusedAppDetector, ProtectedApplicationsAreNeverOffered) {
    TempDir apps;
    makeApp(apps.path(), "Docker", {.bundleID = "com.example.docker"});
    makeApp(apps.path(), "Google Chrome", {.bundleID = "com.example.chrome"});
    makeApp(apps.path(), "SAFARI", {.bundleID = "com.example.safari"});
    makeApp(apps.path(), "Renamed IDE", {.bundleID = "com.apple.dt.Xcode"});
    // Only the identifiers themselves count here, not their vendors: the executor refuses those.
    makeApp(apps.path(), "Keep", {.bundleID = "com.google.Keep"});
    std::map<std::string, TimePoint> dates;
    for (const auto* name : {"Docker.app", "Google Chrome.app", "SAFARI.app", "Renamed IDE.app", "Keep.app"})
        dates[name] = longAgo;
    const auto targets = detectorFor({.appDirs = {apps.path()}, .home = apps / "home", .dates = dates}).scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.google.Keep"}));
}

TEST(UnusedAppDetector, RunningApplicationsAreNotOffered) {
    TempDir apps;
    const auto foo = makeApp(apps.path(), "Foo", {.bundleID = "com.x.Foo", .executable = "FooCore"});
    const std::map<std::string, TimePoint> dates{{"Foo.app", longAgo}};
    const Scenario idle{.appDirs = {apps.path()}, .home = apps / "home", .dates = dates};
    EXPECT_EQ(idsOf(detectorFor(idle).scan()), (std::vector<std::string>{"app:com.x.Foo"}));

    Scenario byName = idle;
    byName.running = {"Foo"};
    EXPECT_TRUE(detectorFor(byName).scan().empty());

    Scenario byExecutable = idle;
    byExecutable.running = {"FooCore"};
    EXPECT_TRUE(detectorFor(byExecutable).scan().empty());

    Scenario byPath = idle;
    byPath.runningFragments = {(foo / "Contents/MacOS/FooCore").string() + " --background"};
    EXPECT_TRUE(detectorFor(byPath).scan().empty());

    Scenario otherProcess = idle;
    otherProcess.running = {"Foo Helper", "foo"};
    otherProcess.runningFragments = {(apps / "Bar.app/Contents/MacOS/Bar").string()};
    EXPECT_EQ(idsOf(detectorFor(otherProcess).scan()), (std::vector<std::string>{"app:com.x.Foo"}));
}

TEST(UnusedAppDetector, OnlyBundlesDirectlyInTheFoldersInFolderOrder) {
    TempDir root;
    const auto system = root / "Applications";
    const auto user = root / "home/Applications";
    makeApp(user, "Second", {.bundleID = "com.x.Second"});
    makeApp(system, "First", {.bundleID = "com.x.First"});
    makeApp(user / "Tools", "Bar", {.bundleID = "com.x.Bar"});
    makeApp(system / "Utilities", "Baz", {.bundleID = "com.x.Baz"});
    makeApp(system, ".Hidden", {.bundleID = "com.x.Hidden"});
    makeApp(system / "upper", "Upper", {.bundleID = "com.x.Upper"});
    std::filesystem::rename(system / "upper/Upper.app", system / "Upper.APP");
    std::map<std::string, TimePoint> dates;
    for (const auto* name : {"First.app", "Second.app", "Bar.app", "Baz.app", ".Hidden.app", "Upper.APP"})
        dates[name] = longAgo;
    const auto targets =
        detectorFor({.appDirs = {system, root / "missing", user}, .home = root / "home", .dates = dates}).scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.x.First", "app:com.x.Second"}));
}

}  // namespace
}  // namespace kelvo
