#include <gtest/gtest.h>

#include "kelvo/AppData.h"
#include "kelvo/AppMetadata.h"
#include "support/Instants.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::utc;

TEST(LeftoverPaths, TheSevenLocationsThatExistInFixedOrder) {
    testing::TempDir home;
    const std::vector<std::filesystem::path> expected{
        home / "Library/Application Support/com.x.y", home / "Library/Caches/com.x.y",
        home / "Library/Containers/com.x.y",          home / "Library/HTTPStorages/com.x.y",
        home / "Library/Logs/com.x.y",                home / "Library/Saved Application State/com.x.y.savedState",
        home / "Library/Preferences/com.x.y.plist",
    };
    // Created in reverse, so the result's order cannot come from creation order.
    for (auto it = expected.rbegin(); it != expected.rend(); ++it) testing::makeDirectory(*it);
    // Group containers are not a location; neither are names without the suffix.
    testing::makeDirectory(home / "Library/Group Containers/com.x.y");
    testing::makeDirectory(home / "Library/Preferences/com.x.y");
    EXPECT_EQ(AppData::leftoverPaths("com.x.y", home.path()), expected);
    std::filesystem::remove_all(home / "Library/Logs/com.x.y");
    std::filesystem::create_directory_symlink(home / "gone", home / "Library/Logs/com.x.y");  // dangling: not there
    std::filesystem::create_directory_symlink(home / "Library/Caches", home / "Library/Logs/com.x.live");
    EXPECT_EQ(AppData::leftoverPaths("com.x.y", home.path()).size(), 6u);
    EXPECT_EQ(AppData::leftoverPaths("com.x.live", home.path()),
              std::vector<std::filesystem::path>{home / "Library/Logs/com.x.live"});
}

TEST(ReverseDNS, ShapeRules) {
    for (const std::string good : {"com.x.y", "a.b.c.d", "com.x-y.z_9", "org.A1.b2"})
        EXPECT_TRUE(AppData::looksLikeReverseDNS(good)) << good;
    for (const std::string bad : {"", "com.x", "com..x.y", ".com.x.y", "com.x.y.", "1com.x.y", "com.-x.y", "com._x.y",
                                  "com.x.y z", "com.x.\xC3\xA9", "com.x/y.z", "com.x.y\n"})
        EXPECT_FALSE(AppData::looksLikeReverseDNS(bad)) << bad;
}

TEST(OrphanRule, SystemToolChainHelperAndInstalledIdentifiersAreNeverOrphans) {
    const std::vector<std::pair<std::set<std::string>, std::vector<std::string>>> notOrphans{
        {{}, {"com.x", "com..x.y", "1com.x.y", "com.apple.Safari", "com.applesoft.tool", "group.com.apple.notes",
              "net.vendor.com.apple.bridge", "org.cups.printers", "org.python.python", "org.chromium.Chromium",
              "org.swift.swiftpm", "com.android.tools", "com.google.Keystone.Agent", "com.google.GoogleUpdater",
              "com.google.SoftwareUpdate", "com.microsoft.autoupdate2", "com.vendor.helper.ShipIt", "com.vendor.app.Helper",
              "com.vendor.app.quicklook", "com.vendor.app.thumbnail", "com.vendor.app.binarycookies"}},
        {{"com.vendor.App"}, {"com.vendor.App", "com.vendor.App.widget"}},
        {{"com.google.Chrome"}, {"com.google.Drive"}},  // a vendor's family, while its application is installed
    };
    for (const auto& [installed, ids] : notOrphans)
        for (const auto& id : ids) EXPECT_FALSE(AppData::isOrphanBundleID(id, installed)) << id;
    const std::vector<std::pair<std::set<std::string>, std::vector<std::string>>> orphans{
        {{}, {"com.vendor.app.helper", "com.vendor.app.SHIPIT", "com.gone.Editor", "Com.Apple.Fake", "org.swiftlang.tool",
              "com.vendor.App.widget", "com.google.Drive"}},
        {{"com.vendor.App"}, {"com.vendor.Apps", "com.vendor.AppX.y"}},  // whole pieces only
        {{"com.google.Earth"}, {"com.google.Drive"}},
    };
    for (const auto& [installed, ids] : orphans)
        for (const auto& id : ids) EXPECT_TRUE(AppData::isOrphanBundleID(id, installed)) << id;
}

TEST(LiveAppMetadata, ParsesTheToolsDateWithItsOffsetAndNothingElse) {
    const std::vector<std::pair<std::string, std::optional<TimePoint>>> cases{
        {"2024-03-01 14:22:05 +0000", utc(2024, 3, 1, 14, 22, 5)},
        {"2024-03-01 14:22:05 +0130", utc(2024, 3, 1, 12, 52, 5)},
        {"2024-03-01 00:10:00 -0500", utc(2024, 3, 1, 5, 10, 0)},
        {"2024-02-29 23:59:59 +0000", utc(2024, 2, 29, 23, 59, 59)},
        {"", std::nullopt},
        {"(null)", std::nullopt},
        {"2024-03-01 14:22:05", std::nullopt},
        {"2024-03-01T14:22:05Z", std::nullopt},
        {"2024-03-01 14:22:05 +00:00", std::nullopt},
        {"2024-03-01 14:22:05 +0000 trailing", std::nullopt},
        {"2023-02-29 10:00:00 +0000", std::nullopt},
        {"2024-13-01 10:00:00 +0000", std::nullopt},
        {"2024-03-01 24:00:00 +0000", std::nullopt},
        {"2024-03-01 14:60:00 +0000", std::nullopt},
        {"24-03-01 14:22:05 +0000", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(LiveAppMetadata::parseToolDate(text), expected) << text;
}

TEST(LiveAppMetadata, WithoutTheMetadataToolTakesTheLaterOfTheBundlesAndItsContentsDates) {
    if (std::filesystem::exists("/usr/bin/mdls")) GTEST_SKIP() << "/usr/bin/mdls exists here and would answer first";
    testing::TempDir folder;
    const auto early = utc(2020, 1, 1, 12);
    const auto late = utc(2022, 6, 15, 8, 30, 1);
    const auto contentsLater = testing::makeDirectory(folder / "ContentsLater.app/Contents").parent_path();
    const auto bundleLater = testing::makeDirectory(folder / "BundleLater.app/Contents").parent_path();
    const auto bare = testing::makeDirectory(folder / "Bare.app");
    testing::setModificationTime(contentsLater / "Contents", late);
    testing::setModificationTime(contentsLater, early);
    testing::setModificationTime(bundleLater / "Contents", early);
    testing::setModificationTime(bundleLater, late);
    testing::setModificationTime(bare, early);
    const LiveAppMetadata metadata;
    EXPECT_EQ(metadata.lastUsed(contentsLater), late);
    EXPECT_EQ(metadata.lastUsed(bundleLater), late);
    EXPECT_EQ(metadata.lastUsed(bare), early);
    EXPECT_EQ(metadata.lastUsed(folder / "Missing.app"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
