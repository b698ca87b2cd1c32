#include <gtest/gtest.h>

#include "kelvo/OldSimRuntimeDetector.h"
#include "support/Instants.h"
#include "support/TargetIds.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::idsOf;
using testing::utc;

RuntimeLister listing(std::vector<SimRuntime> runtimes) {
    return [runtimes] { return runtimes; };
}

TEST(OldSimRuntimeDetector, OffersDeletableRuntimesUsedBeforeTheCutOffOrAllWithoutNow) {
    const auto cutOff = utc(2024, 4, 1);  // 3 months of 30 days before the 30th of June
    const auto lister = listing({
        {"A-1_b.C", "iOS 17.2", 7000000000, true, utc(2024, 3, 1)},
        {"Locked", "iOS 16.0", 5000000000, false, utc(2024, 3, 1)},
        {"Edge", "iOS 16.1", 10, true, cutOff},
        {"JustBefore", "iOS 16.2", 20, true, cutOff - 1s},
        {"NeverUsed", "iOS 15.0", 40, true, std::nullopt},
        {"x; rm -rf ~", "odd", 1, true, std::nullopt},  // a strange identifier stays one shell word
        {"it's", "quote", 1, true, std::nullopt},
    });
    const auto targets = OldSimRuntimeDetector(lister, 3, utc(2024, 6, 30)).scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"sim-runtime:A-1_b.C", "sim-runtime:JustBefore"}));
    ASSERT_FALSE(targets.empty());
    EXPECT_EQ(targets[0].kind, CleanKind::command("xcrun simctl runtime delete A-1_b.C"));
    EXPECT_EQ(targets[0].sizeBytes, 7000000000);
    EXPECT_EQ(targets[0].level, Level::aggressive);
    const auto all = OldSimRuntimeDetector(lister, 3, std::nullopt).scan();
    EXPECT_EQ(idsOf(all), (std::vector<std::string>{"sim-runtime:A-1_b.C", "sim-runtime:Edge", "sim-runtime:JustBefore",
                                                    "sim-runtime:NeverUsed", "sim-runtime:x; rm -rf ~", "sim-runtime:it's"}));
    ASSERT_EQ(all.size(), 6u);
    EXPECT_EQ(all[4].kind.commandLine(), "xcrun simctl runtime delete 'x; rm -rf ~'");
    EXPECT_EQ(all[5].kind.commandLine(), "xcrun simctl runtime delete 'it'\\''s'");
}

}  // namespace
}  // namespace kelvo
