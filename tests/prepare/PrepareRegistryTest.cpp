#include <gtest/gtest.h>

#include <limits>

#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TempDir.h"
#include "kelvo/Environment.h"
#include "kelvo/OldSimRuntimeDetector.h"
#include "kelvo/OrphanedLeftoverDetector.h"
#include "kelvo/MonthsBefore.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/ProtectedApps.h"
#include "kelvo/UnusedAppDetector.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;
using testing::utc;

Environment environmentAt(const std::filesystem::path& home) {
    Environment env;
    env.home = home;
    env.tmpDir = home / "tmp";
    env.catalog = CatalogProfile::macos;
    return env;
}

CleanerList preparersFor(const Environment& env, const std::optional<std::vector<std::filesystem::path>>& appIndexDirs,
                         RuntimeLister lister = [] { return std::vector<SimRuntime>{}; }) {
    return PrepareRegistry::makePreparers(env, 6, utc(2025, 7, 1), std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{}),
                                          std::move(lister), appIndexDirs, std::make_shared<StubProcessProbe>());
}

std::set<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::set<std::string> ids;
    for (const auto& target : targets) ids.insert(target.id);
    return ids;
}

TEST(MakePreparers, ThreeDetectorsInOrderBuiltFromTheSettings) {
    const auto env = environmentAt("/home/u");
    const auto now = utc(2025, 7, 1);
    const auto preparers = preparersFor(env, std::vector<std::filesystem::path>{});
    ASSERT_EQ(preparers.size(), 3u);
    EXPECT_EQ(preparers[0]->id(), "app-leftovers");
    EXPECT_EQ(preparers[1]->id(), "unused-apps");
    EXPECT_EQ(preparers[2]->id(), "sim-runtimes");

    const auto* leftovers = dynamic_cast<const OrphanedLeftoverDetector*>(preparers[0].get());
    ASSERT_NE(leftovers, nullptr);
    EXPECT_EQ(leftovers->home(), "/home/u");
    EXPECT_EQ(leftovers->protectedBundleIDs(), PrepareRegistry::protectedBundleIDs());
    EXPECT_EQ(leftovers->protectedNames(), PrepareRegistry::protectedNames());

    const auto* unused = dynamic_cast<const UnusedAppDetector*>(preparers[1].get());
    ASSERT_NE(unused, nullptr);
    EXPECT_EQ(unused->appDirs(), (std::vector<std::filesystem::path>{"/Applications", "/home/u/Applications"}));
    EXPECT_EQ(unused->home(), "/home/u");
    EXPECT_EQ(unused->olderThanMonths(), 6);
    EXPECT_EQ(unused->now(), now);

    const auto* runtimes = dynamic_cast<const OldSimRuntimeDetector*>(preparers[2].get());
    ASSERT_NE(runtimes, nullptr);
    EXPECT_EQ(runtimes->olderThanMonths(), 6);
    EXPECT_EQ(runtimes->now(), now);
}

TEST(MakePreparers, InstalledApplicationsComeFromTheIndexFoldersOrTheStandardOnes) {
    TempDir home;
    testing::makeApp(home / "Applications", "Kept", {.bundleID = "com.x.Kept"});
    testing::makeApp(home / "Elsewhere", "Other", {.bundleID = "com.x.Other"});
    testing::writeFile(home / "Library/Caches/com.x.Kept/data", 4096);
    testing::writeFile(home / "Library/Caches/com.x.Other/data", 4096);
    const auto env = environmentAt(home.path());

    // An empty list: nothing counts as installed.
    EXPECT_EQ(idsOf(preparersFor(env, std::vector<std::filesystem::path>{})[0]->scan()),
              (std::set<std::string>{"leftover:com.x.Kept", "leftover:com.x.Other"}));
    // None: the standard folders, of which only home/Applications exists here.
    EXPECT_EQ(idsOf(preparersFor(env, std::nullopt)[0]->scan()), (std::set<std::string>{"leftover:com.x.Other"}));
    // Given folders replace the standard ones.
    EXPECT_EQ(idsOf(preparersFor(env, std::vector<std::filesystem::path>{home / "Elsewhere"})[0]->scan()),
              (std::set<std::string>{"leftover:com.x.Kept"}));
}

TEST(MakePreparers, InstalledApplicationsAreListedAtEachCall) {
    TempDir home;
    testing::writeFile(home / "Library/Caches/com.x.Late/data", 4096);
    const auto env = environmentAt(home.path());
    const std::vector<std::filesystem::path> index{home / "Applications"};
    const auto before = preparersFor(env, index);
    testing::makeApp(home / "Applications", "Late", {.bundleID = "com.x.Late"});
    const auto after = preparersFor(env, index);
    // The earlier detector keeps its snapshot; the new one sees the installation.
    EXPECT_EQ(idsOf(before[0]->scan()), (std::set<std::string>{"leftover:com.x.Late"}));
    EXPECT_TRUE(after[0]->scan().empty());
}

TEST(MakePreparers, RuntimeDetectorAlwaysHasACutOff) {
    const auto env = environmentAt("/home/u");
    const auto preparers = preparersFor(env, std::vector<std::filesystem::path>{}, [] {
        return std::vector<SimRuntime>{{"Old", "iOS 15.0", 100, true, utc(2024, 1, 1)},
                                       {"NeverUsed", "iOS 14.0", 100, true, std::nullopt}};
    });
    EXPECT_EQ(idsOf(preparers[2]->scan()), (std::set<std::string>{"sim-runtime:Old"}));
}

TEST(MonthsBefore, ThirtyDayMonthsAndTheClocksLimits) {
    const auto now = utc(2024, 6, 30);
    EXPECT_EQ(monthsBefore(now, 3), utc(2024, 4, 1));
    EXPECT_EQ(monthsBefore(now, 0), now);
    EXPECT_EQ(monthsBefore(now, -1), now + 30 * 24h);
    EXPECT_EQ(monthsBefore(now + 250ms, 1), now + 250ms - 30 * 24h);
    using TimePoint = std::chrono::system_clock::time_point;
    EXPECT_EQ(monthsBefore(now, std::numeric_limits<int>::max()), TimePoint::min());
    EXPECT_EQ(monthsBefore(now, std::numeric_limits<int>::min()), TimePoint::max());
    EXPECT_EQ(monthsBefore(TimePoint::min() + 24h, 1), TimePoint::min());
}

TEST(ProtectedApplications, IdentifiersVendorsAndNames) {
    for (const std::string id : {"com.apple.Safari", "com.apple.Safari.SafeBrowsing", "com.google.Keep",
                                 "org.mozilla.thunderbird", "com.acme.Docker", "com.acme.Code", "company.thebrowser.Other"})
        EXPECT_TRUE(PrepareRegistry::isProtectedBundleID(id)) << id;
    for (const std::string id : {"com.acme.Coder", "com.acme", "com", "", "com.googlex.Keep", "org.mozillafoundation.x"})
        EXPECT_FALSE(PrepareRegistry::isProtectedBundleID(id)) << id;

    EXPECT_EQ(ProtectedApps::brandPrefix("a.b"), "a.b");
    EXPECT_EQ(ProtectedApps::brandPrefix("a..b"), std::nullopt);
    EXPECT_EQ(ProtectedApps::brandPrefix("a.b.c.d"), "a.b");
    EXPECT_EQ(ProtectedApps::brandPrefix("com"), std::nullopt);
    EXPECT_EQ(ProtectedApps::brandPrefix(".x.y"), std::nullopt);

    EXPECT_TRUE(PrepareRegistry::isProtectedName("Google Chrome"));
    EXPECT_TRUE(PrepareRegistry::isProtectedName("SAFARI"));
    EXPECT_FALSE(PrepareRegistry::isProtectedName("Chrome"));
    EXPECT_FALSE(PrepareRegistry::isProtectedName(" safari"));
}

}  // namespace
}  // namespace kelvo
