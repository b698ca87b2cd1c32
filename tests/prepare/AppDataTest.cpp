#include <gtest/gtest.h>

#include "kelvo/AppData.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

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

}  // namespace
}  // namespace kelvo
