#include <gtest/gtest.h>

#include "kelvo/CleanService.h"
#include "kelvo/CleanerRegistry.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::TempDir;

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
    EXPECT_TRUE(familiesOf(*all).contains(Family::xcodeCore));
    EXPECT_TRUE(familiesOf(*all).contains(Family::androidGradle));

    env.enabledFamilies = std::set<Family>{Family::xcodeCore};
    const auto onlyXcode = service().scan();
    ASSERT_TRUE(onlyXcode);
    EXPECT_EQ(familiesOf(*onlyXcode), std::set<Family>{Family::xcodeCore});

    env.enabledFamilies = std::set<Family>{};
    EXPECT_TRUE(service().enabledCleaners().empty());
    EXPECT_TRUE(service().scan()->empty());
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

TEST_F(CleanServiceOnFakeHome, DryRunReportsWithoutTouchingTheDisk) {
    const auto targets = service().scan();
    ASSERT_TRUE(targets);
    ASSERT_FALSE(targets->empty());
    const std::string before = testing::listing(home.path());
    const auto report = service().clean(*targets, true, false);
    EXPECT_EQ(testing::listing(home.path()), before);
    std::int64_t expected = 0;
    for (const auto& target : *targets) expected += target.sizeBytes;
    EXPECT_EQ(report.freedBytes, expected);
    EXPECT_EQ(report.deleted.size(), targets->size());
}

}  // namespace
}  // namespace kelvo
