#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"

namespace kelvo {
namespace {

TEST(FamilyAlias, IsCaseInsensitiveButAcceptsOnlyListedWords) {
    EXPECT_EQ(familyFromAlias("XCODE"), Family::xcodeCore);
    EXPECT_EQ(familyFromAlias("Xcode"), Family::xcodeCore);
    EXPECT_EQ(familyFromAlias(".NET"), Family::dotNet);
    EXPECT_EQ(familyFromAlias("DotNet"), Family::dotNet);
    EXPECT_EQ(familyFromAlias("Kotlin"), Family::jvm);
    EXPECT_EQ(familyFromAlias("PY"), Family::python);
    EXPECT_EQ(familyFromAlias("Leftovers"), Family::appLeftovers);
    // A raw value is accepted only where it is also one of the words.
    EXPECT_EQ(familyFromAlias("docker"), Family::docker);
    EXPECT_EQ(familyFromAlias("xcodeCore"), std::nullopt);
    EXPECT_EQ(familyFromAlias("androidGradle"), std::nullopt);
    EXPECT_EQ(familyFromAlias(""), std::nullopt);
    EXPECT_EQ(familyFromAlias(" xcode"), std::nullopt);
}

TEST(FamilyRawValue, IsExactAndRoundTrips) {
    EXPECT_EQ(familyFromRawValue("Docker"), std::nullopt);
    EXPECT_EQ(familyFromRawValue("docker"), Family::docker);
    EXPECT_EQ(familyFromRawValue(""), std::nullopt);
    std::set<std::string_view> seen;
    for (Family family : allFamilies()) {
        EXPECT_EQ(familyFromRawValue(rawValue(family)), family) << rawValue(family);
        EXPECT_TRUE(seen.insert(rawValue(family)).second) << "duplicate raw value " << rawValue(family);
    }
    EXPECT_EQ(seen.size(), 19u);
}

TEST(FamilyLists, CleanDomainIsSeventeenInDeclarationOrder) {
    const auto& clean = cleanDomainFamilies();
    ASSERT_EQ(clean.size(), 17u);
    EXPECT_EQ(clean[0], Family::xcodeCore);
    EXPECT_EQ(clean[1], Family::simulators);
    EXPECT_EQ(clean[15], Family::gameEngines);
    EXPECT_EQ(clean[16], Family::otherLangs);
    const auto docker = std::find(clean.begin(), clean.end(), Family::docker);
    ASSERT_NE(docker, clean.end());
    ASSERT_NE(docker + 1, clean.end());
    EXPECT_EQ(*(docker + 1), Family::dotNet);
    EXPECT_EQ(std::count(clean.begin(), clean.end(), Family::appLeftovers), 0);
    EXPECT_EQ(std::count(clean.begin(), clean.end(), Family::unusedApps), 0);
    EXPECT_TRUE(std::is_sorted(clean.begin(), clean.end()));
}

TEST(FamilyLists, EveryFamilyHasADisplayTextAndAnIcon) {
    for (Family family : allFamilies()) {
        const std::string key = "family." + std::string(rawValue(family));
        EXPECT_NE(displayName(family), key) << "no text for " << key;
        EXPECT_FALSE(iconName(family).empty()) << key;
    }
}

TEST(FamilyLists, GuardedProcessesKeepTheirOrder) {
    EXPECT_EQ(guardedProcesses(Family::androidGradle),
              (std::vector<std::string>{"studio", "qemu-system-x86_64", "qemu-system-aarch64", "java"}));
    EXPECT_EQ(guardedProcesses(Family::simulators), (std::vector<std::string>{"Xcode", "Simulator"}));
    EXPECT_TRUE(guardedProcesses(Family::python).empty());
}

TEST(RiskAxes, RawValuesRoundTripExactly) {
    for (Level level : {Level::safe, Level::moderate, Level::aggressive})
        EXPECT_EQ(levelFromRawValue(rawValue(level)), level);
    for (Reversibility value : {Reversibility::regenerable, Reversibility::userData})
        EXPECT_EQ(reversibilityFromRawValue(rawValue(value)), value);
    for (RegenCost cost : {RegenCost::rebuild, RegenCost::reindex, RegenCost::redownload})
        EXPECT_EQ(regenCostFromRawValue(rawValue(cost)), cost);
    EXPECT_EQ(rawValue(Reversibility::userData), "userData");
    EXPECT_EQ(levelFromRawValue("Safe"), std::nullopt);
    EXPECT_EQ(regenCostFromRawValue("download"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
