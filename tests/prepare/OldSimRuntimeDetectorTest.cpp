#include <gtest/gtest.h>

#include <atomic>

#include "support/Instants.h"
#include "kelvo/L10n.h"
#include "kelvo/OldSimRuntimeDetector.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::utc;

std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    return ids;
}

RuntimeLister listing(std::vector<SimRuntime> runtimes) {
    return [runtimes] { return runtimes; };
}

TEST(OldSimRuntimeDetector, IdentityOfTheDetector) {
    const OldSimRuntimeDetector detector(listing({}), 6, std::nullopt);
    EXPECT_EQ(detector.id(), "sim-runtimes");
    EXPECT_EQ(detector.name(), "Runtimes de simulador viejos");
    EXPECT_EQ(detector.family(), Family::simulators);
}

TEST(OldSimRuntimeDetector, OffersDeletableRuntimesUsedBeforeTheCutOff) {
    const auto now = utc(2024, 6, 30);
    const auto cutOff = utc(2024, 4, 1);  // 90 days earlier
    const OldSimRuntimeDetector detector(listing({
                                             {"A1", "iOS 17.2", 7000000000, true, utc(2024, 3, 1)},
                                             {"Locked", "iOS 16.0", 5000000000, false, utc(2024, 3, 1)},
                                             {"Edge", "iOS 16.1", 10, true, cutOff},
                                             {"JustBefore", "iOS 16.2", 20, true, cutOff - 1s},
                                             {"Recent", "iOS 17.4", 30, true, utc(2024, 6, 1)},
                                             {"NeverUsed", "iOS 15.0", 40, true, std::nullopt},
                                         }),
                                         3, now);
    const auto targets = detector.scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"sim-runtime:A1", "sim-runtime:JustBefore"}));
    ASSERT_FALSE(targets.empty());
    const auto& target = targets[0];
    EXPECT_EQ(target.name, L10n::t("cleaner.simRuntime.target", std::string("iOS 17.2")));
    EXPECT_EQ(target.family, Family::simulators);
    EXPECT_EQ(target.kind, CleanKind::command("xcrun simctl runtime delete A1"));
    EXPECT_EQ(target.sizeBytes, 7000000000);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::redownload);
    EXPECT_EQ(target.level, Level::aggressive);
    EXPECT_EQ(target.notes, "Re-descargable desde Xcode.");
}

TEST(OldSimRuntimeDetector, WithoutNowEveryDeletableRuntimeIsOffered) {
    const OldSimRuntimeDetector detector(listing({
                                             {"Used", "iOS 17.2", 100, true, utc(2024, 6, 1)},
                                             {"NeverUsed", "iOS 15.0", 0, true, std::nullopt},
                                             {"Locked", "iOS 16.0", 100, false, std::nullopt},
                                         }),
                                         6, std::nullopt);
    EXPECT_EQ(idsOf(detector.scan()), (std::vector<std::string>{"sim-runtime:Used", "sim-runtime:NeverUsed"}));
}

TEST(OldSimRuntimeDetector, ParsedRuntimeWithFractionalSecondsIsNeverOfferedUnderACutOff) {
    const auto runtimes = SimRuntimeLister::parse(R"({
        "F1": {"version": "17.0", "deletable": true, "lastUsedAt": "2020-01-05T10:00:00.123Z", "sizeBytes": 5},
        "W1": {"version": "16.0", "deletable": true, "lastUsedAt": "2020-01-05T10:00:00Z", "sizeBytes": 5}
    })");
    EXPECT_EQ(idsOf(OldSimRuntimeDetector(listing(runtimes), 6, utc(2024, 6, 30)).scan()),
              (std::vector<std::string>{"sim-runtime:W1"}));
}

TEST(OldSimRuntimeDetector, AsksTheListerOncePerScan) {
    auto calls = std::make_shared<std::atomic<int>>(0);
    const OldSimRuntimeDetector detector(
        [calls] {
            ++*calls;
            return std::vector<SimRuntime>{};
        },
        6, utc(2024, 6, 30));
    EXPECT_TRUE(detector.scan().empty());
    EXPECT_EQ(calls->load(), 1);
}

TEST(OldSimRuntimeDetector, StrangeIdentifierStaysOneShellWord) {
    const OldSimRuntimeDetector detector(listing({{"x; rm -rf ~", "odd", 1, true, std::nullopt},
                                                  {"it's", "quote", 1, true, std::nullopt},
                                                  {"A-1_b.C", "plain", 1, true, std::nullopt}}),
                                         6, std::nullopt);
    const auto targets = detector.scan();
    ASSERT_EQ(targets.size(), 3u);
    EXPECT_EQ(targets[0].kind.commandLine(), "xcrun simctl runtime delete 'x; rm -rf ~'");
    EXPECT_EQ(targets[1].kind.commandLine(), "xcrun simctl runtime delete 'it'\\''s'");
    EXPECT_EQ(targets[2].kind.commandLine(), "xcrun simctl runtime delete A-1_b.C");
    EXPECT_EQ(targets[0].id, "sim-runtime:x; rm -rf ~");
}

}  // namespace
}  // namespace kelvo
