// Services built with their dependencies left out, or given as null, use the live ones:
// over a fake home they scan and clean like the tool does, and never call through a null.
#include <gtest/gtest.h>

#include "kelvo/CleanService.h"
#include "kelvo/Config.h"
#include "kelvo/PrepareService.h"
#include "support/AppBundle.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;

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
        const auto targets = service->scan();
        ASSERT_TRUE(targets);
        const auto ids = testing::idSetOf(*targets);
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

}  // namespace
}  // namespace kelvo
