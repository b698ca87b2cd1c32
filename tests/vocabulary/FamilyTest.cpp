#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"

namespace kelvo {
namespace {

TEST(Family, AliasesAreCaseInsensitiveListedWordsOnly) {
    const std::vector<std::pair<std::string, std::optional<Family>>> cases{
        {"XCODE", Family::xcodeCore}, {".NET", Family::dotNet}, {"DotNet", Family::dotNet},
        {"Kotlin", Family::jvm},      {"PY", Family::python},   {"Leftovers", Family::appLeftovers},
        {"docker", Family::docker},   {"xcodeCore", std::nullopt},  // a raw value only where it is also a word
        {"", std::nullopt},           {" xcode", std::nullopt},
    };
    for (const auto& [alias, family] : cases) EXPECT_EQ(familyFromAlias(alias), family) << alias;
}

TEST(Vocabulary, RawValuesOfFamiliesAndRiskAxesAreUniqueExactAndRoundTripAndEveryFamilyHasATextAndAnIcon) {
    std::set<std::string_view> seen;
    for (Family family : allFamilies()) {
        EXPECT_EQ(familyFromRawValue(rawValue(family)), family) << rawValue(family);
        EXPECT_TRUE(seen.insert(rawValue(family)).second) << "duplicate raw value " << rawValue(family);
        EXPECT_NE(displayName(family), "family." + std::string(rawValue(family)));
        EXPECT_FALSE(iconName(family).empty()) << rawValue(family);
    }
    EXPECT_EQ(seen.size(), 19u);
    EXPECT_EQ(familyFromRawValue("Docker"), std::nullopt);
    const auto& clean = cleanDomainFamilies();
    EXPECT_EQ(clean.size(), 17u);
    EXPECT_TRUE(std::is_sorted(clean.begin(), clean.end()));
    for (Family prepareOnly : {Family::appLeftovers, Family::unusedApps})
        EXPECT_EQ(std::count(clean.begin(), clean.end(), prepareOnly), 0);
    EXPECT_EQ(guardedProcesses(Family::simulators), (std::vector<std::string>{"Xcode", "Simulator"}));
    EXPECT_TRUE(guardedProcesses(Family::python).empty());
    for (Level level : {Level::safe, Level::moderate, Level::aggressive}) EXPECT_EQ(levelFromRawValue(rawValue(level)), level);
    for (Reversibility value : {Reversibility::regenerable, Reversibility::userData})
        EXPECT_EQ(reversibilityFromRawValue(rawValue(value)), value);
    for (RegenCost cost : {RegenCost::rebuild, RegenCost::reindex, RegenCost::redownload})
        EXPECT_EQ(regenCostFromRawValue(rawValue(cost)), cost);
    EXPECT_EQ(levelFromRawValue("Safe"), std::nullopt);
    EXPECT_EQ(regenCostFromRawValue("download"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
