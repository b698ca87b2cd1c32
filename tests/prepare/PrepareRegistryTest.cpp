#include <gtest/gtest.h>

#include <limits>

#include "kelvo/Environment.h"
#include "kelvo/PrepareRegistry.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"
#include "kelvo/MonthsBefore.h"
#include "kelvo/ProtectedApps.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::idSetOf;
using testing::utc;

// The leftovers the first detector offers, with the installed applications found in `appIndexDirs`.
std::set<std::string> leftovers(const fs::path& home, const std::optional<std::vector<fs::path>>& appIndexDirs) {
    Environment env;
    env.home = home;
    env.tmpDir = home / "tmp";
    env.catalog = CatalogProfile::macos;
    const auto preparers = PrepareRegistry::makePreparers(
        env, 6, utc(2025, 7, 1), std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{}),
        [] { return std::vector<SimRuntime>{}; }, appIndexDirs, std::make_shared<StubProcessProbe>());
    EXPECT_EQ(preparers.at(0)->id(), "app-leftovers");
    return idSetOf(preparers.at(0)->scan());
}

TEST(MakePreparers, InstalledApplicationsComeFromTheIndexFoldersOrTheStandardOnesAtEachCall) {
    testing::TempDir home;
    for (const auto& [folder, name] : std::vector<std::pair<fs::path, std::string>>{{home / "Applications", "Kept"},
                                                                                    {home / "Elsewhere", "Other"}}) {
        testing::FakeApp app;
        app.bundleID = "com.x." + name;
        testing::makeApp(folder, name, app);
        testing::writeFile(home / "Library/Caches" / ("com.x." + name) / "data", 4096);
    }
    // An empty list: nothing counts as installed; none: the standard folders, of which only
    // home/Applications exists here; given folders replace the standard ones.
    EXPECT_EQ(leftovers(home.path(), std::vector<fs::path>{}), (std::set<std::string>{"leftover:com.x.Kept", "leftover:com.x.Other"}));
    EXPECT_EQ(leftovers(home.path(), std::nullopt), (std::set<std::string>{"leftover:com.x.Other"}));
    EXPECT_EQ(leftovers(home.path(), std::vector<fs::path>{home / "Elsewhere"}), (std::set<std::string>{"leftover:com.x.Kept"}));
    // Listed again at each call: an application installed since counts.
    fs::rename(home / "Elsewhere/Other.app", home / "Applications/Other.app");
    EXPECT_EQ(leftovers(home.path(), std::nullopt), std::set<std::string>{});
}

TEST(MonthsBefore, ThirtyDayMonthsAndTheClocksLimits) {
    using TimePoint = std::chrono::system_clock::time_point;
    const auto now = utc(2024, 6, 30);
    const std::vector<std::tuple<TimePoint, int, TimePoint>> cases{
        {now, 3, utc(2024, 4, 1)},
        {now, 0, now},
        {now, -1, now + 30 * 24h},
        {now + 250ms, 1, now + 250ms - 30 * 24h},
        {now, std::numeric_limits<int>::max(), TimePoint::min()},
        {now, std::numeric_limits<int>::min(), TimePoint::max()},
        {TimePoint::min() + 24h, 1, TimePoint::min()},
    };
    for (const auto& [from, months, expected] : cases) EXPECT_EQ(monthsBefore(from, months), expected) << months;
}

TEST(ProtectedApplications, IdentifiersTheirPartsTheirVendorsAndNames) {
    for (const std::string id : {"com.apple.Safari", "com.apple.Safari.SafeBrowsing", "com.google.Keep",
                                 "org.mozilla.thunderbird", "com.acme.Docker", "com.acme.Code", "company.thebrowser.Other"})
        EXPECT_TRUE(PrepareRegistry::isProtectedBundleID(id)) << id;
    for (const std::string id : {"com.acme.Coder", "com.acme", "com", "", "com.googlex.Keep", "org.mozillafoundation.x"})
        EXPECT_FALSE(PrepareRegistry::isProtectedBundleID(id)) << id;
    const std::vector<std::pair<std::string, std::optional<std::string>>> brands{
        {"a.b", "a.b"}, {"a.b.c.d", "a.b"}, {"a..b", std::nullopt}, {"com", std::nullopt}, {".x.y", std::nullopt}};
    for (const auto& [text, brand] : brands) EXPECT_EQ(ProtectedApps::brandPrefix(text), brand) << text;
    EXPECT_TRUE(PrepareRegistry::isProtectedName("Google Chrome"));
    EXPECT_TRUE(PrepareRegistry::isProtectedName("SAFARI"));
    EXPECT_FALSE(PrepareRegistry::isProtectedName("Chrome"));
    EXPECT_FALSE(PrepareRegistry::isProtectedName(" safari"));
}

}  // namespace
}  // namespace kelvo
