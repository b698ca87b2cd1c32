#include <gtest/gtest.h>

#include "kelvo/CleanService.h"
#include "kelvo/CleanerRegistry.h"
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
        // No tool is available to command cleaners when PATH holds nothing; the catalog
        // asks /usr/bin/which, so keep the machine's tools out of these tests' results.
        return CleanService{env, std::make_shared<StubProcessProbe>(), [](const std::string&, const ShellVariables&) { return 0; }};
    }

    TempDir home;
    TempDir tmp;
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
