#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "kelvo/AppData.h"

namespace kelvo {
namespace {

using testing::TempDir;

TEST(LeftoverPaths, OnlyExistingLocationsInFixedOrder) {
    TempDir home;
    testing::writeFile(home / "Library/Preferences/com.x.y.plist", 100);
    testing::writeFile(home / "Library/Caches/com.x.y/db", 100);
    EXPECT_EQ(AppData::leftoverPaths("com.x.y", home.path()),
              (std::vector<std::filesystem::path>{home / "Library/Caches/com.x.y", home / "Library/Preferences/com.x.y.plist"}));
}

TEST(LeftoverPaths, AllSevenLocationsWithTheirSuffixes) {
    TempDir home;
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
}

TEST(LeftoverPaths, LinkCountsOnlyWhenItsTargetExists) {
    TempDir home;
    testing::makeDirectory(home / "Library/Caches");
    testing::makeDirectory(home / "elsewhere");
    std::filesystem::create_directory_symlink(home / "elsewhere", home / "Library/Caches/com.x.live");
    std::filesystem::create_directory_symlink(home / "gone", home / "Library/Caches/com.x.dangling");
    EXPECT_EQ(AppData::leftoverPaths("com.x.live", home.path()),
              (std::vector<std::filesystem::path>{home / "Library/Caches/com.x.live"}));
    EXPECT_TRUE(AppData::leftoverPaths("com.x.dangling", home.path()).empty());
}

TEST(ReverseDNS, ShapeRules) {
    for (const std::string good : {"com.x.y", "a.b.c.d", "com.x-y.z_9", "org.A1.b2"})
        EXPECT_TRUE(AppData::looksLikeReverseDNS(good)) << good;
    for (const std::string bad : {"", "com.x", "com..x.y", ".com.x.y", "com.x.y.", "1com.x.y", "com.-x.y", "com._x.y",
                                  "com.x.y z", "com.x.\xC3\xA9", "com.x/y.z", "com.x.y\n"})
        EXPECT_FALSE(AppData::looksLikeReverseDNS(bad)) << bad;
}

TEST(OrphanRule, IdentifiersThatAreNeverOrphans) {
    const std::set<std::string> none;
    for (const std::string id : {
             "com.x", "com..x.y", "1com.x.y", "com.x.y z", "com.x.\xC3\xA9",           // not reverse-DNS shaped
             "com.apple.Safari", "com.applesoft.tool", "group.com.apple.notes",        // the system's
             "net.vendor.com.apple.bridge",                                            // ".com.apple." inside
             "org.cups.printers", "org.python.python", "org.chromium.Chromium",        // system-ish tools
             "org.swift.swiftpm", "com.android.tools", "com.google.Keystone.Agent",    // tool chains, updaters
             "com.google.GoogleUpdater", "com.google.SoftwareUpdate", "com.microsoft.autoupdate2",
             "com.vendor.helper.ShipIt", "com.vendor.app.Helper", "com.vendor.app.quicklook",  // helper suffixes
             "com.vendor.app.thumbnail", "com.vendor.app.binarycookies",
         })
        EXPECT_FALSE(AppData::isOrphanBundleID(id, none)) << id;
}

TEST(OrphanRule, CaseSensitiveHelperSuffixAndPlainOrphans) {
    const std::set<std::string> none;
    EXPECT_TRUE(AppData::isOrphanBundleID("com.vendor.app.helper", none));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.vendor.app.SHIPIT", none));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.gone.Editor", none));
    // Prefixes compare exactly, without lower-casing.
    EXPECT_TRUE(AppData::isOrphanBundleID("Com.Apple.Fake", none));
    EXPECT_TRUE(AppData::isOrphanBundleID("org.swiftlang.tool", none));
}

TEST(OrphanRule, InstalledApplicationsAndTheirParts) {
    const std::set<std::string> installed{"com.vendor.App"};
    EXPECT_FALSE(AppData::isOrphanBundleID("com.vendor.App", installed));
    EXPECT_FALSE(AppData::isOrphanBundleID("com.vendor.App.widget", installed));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.vendor.App.widget", {}));
    // A prefix only on whole pieces: "com.vendor.Apps" is another application.
    EXPECT_TRUE(AppData::isOrphanBundleID("com.vendor.Apps", installed));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.vendor.AppX.y", installed));
}

TEST(OrphanRule, VendorFamilyCountsOnlyWhileItsApplicationIsInstalled) {
    EXPECT_FALSE(AppData::isOrphanBundleID("com.google.Drive", {"com.google.Chrome"}));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.google.Drive", {}));
    EXPECT_TRUE(AppData::isOrphanBundleID("com.google.Drive", {"com.google.Earth"}));
}

}  // namespace
}  // namespace kelvo
