#include <gtest/gtest.h>

#include "support/AppBundle.h"
#include "support/TempDir.h"
#include "kelvo/InstalledApps.h"

namespace kelvo {
namespace {

using testing::FakeApp;
using testing::makeApp;
using testing::PlistEncoding;
using testing::TempDir;

TEST(InstalledApps, StandardFoldersInOrderEndingWithTheHomeFolder) {
    EXPECT_EQ(InstalledApps::standardAppDirs("/Users/u"),
              (std::vector<std::filesystem::path>{"/Applications", "/Applications/Utilities", "/System/Applications",
                                                  "/System/Applications/Utilities", "/Users/u/Applications"}));
}

TEST(InstalledApps, FindsOnlyBundlesDirectlyInsideAndNotHidden) {
    TempDir folder;
    const auto a = makeApp(folder.path(), "A", {.bundleID = "com.a.A"});
    testing::writeText(folder / "notes.txt", "not an application");
    makeApp(folder.path(), ".Hidden", {.bundleID = "com.hidden.App"});
    makeApp(folder / "Vendor", "B", {.bundleID = "com.b.B"});

    EXPECT_EQ(InstalledApps::scan({folder.path()}), (std::vector<AppInfo>{{a, "com.a.A", "A"}}));
}

TEST(InstalledApps, ExtensionIsCaseSensitive) {
    TempDir folder;
    makeApp(folder.path() / "upper", "X", {.bundleID = "com.x.X"});
    std::filesystem::rename(folder / "upper/X.app", folder / "X.APP");
    EXPECT_TRUE(InstalledApps::scan({folder.path()}).empty());
}

TEST(InstalledApps, ReadsBinaryAndXMLInfoPlistsAndSkipsUnusableOnes) {
    TempDir folder;
    const auto binary = makeApp(folder.path(), "Binary", {.bundleID = "com.x.Binary", .encoding = PlistEncoding::binary});
    const auto xml = makeApp(folder.path(), "Xml", {.bundleID = "com.x.Xml", .encoding = PlistEncoding::xml});
    testing::writeInfoPlist(folder / "Numeric.app", {{"CFBundleIdentifier", std::int64_t{42}}}, PlistEncoding::binary);
    makeApp(folder.path(), "NoIdentifier", {.executable = "NoIdentifier"});
    testing::writeText(folder / "Garbage.app/Contents/Info.plist", "this is not a property list");
    testing::writeText(folder / "Array.app/Contents/Info.plist",
                       "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>com.x.Array</string></array></plist>");
    testing::makeDirectory(folder / "Empty.app");

    auto apps = InstalledApps::scan({folder.path()});
    std::sort(apps.begin(), apps.end(), [](const AppInfo& left, const AppInfo& right) { return left.name < right.name; });
    EXPECT_EQ(apps, (std::vector<AppInfo>{{binary, "com.x.Binary", "Binary"}, {xml, "com.x.Xml", "Xml"}}));
}

TEST(InstalledApps, FoldersInGivenOrderMissingOnesSkippedDuplicatesKept) {
    TempDir root;
    const auto first = makeApp(root / "one", "Tool", {.bundleID = "com.x.Tool"});
    const auto second = makeApp(root / "two", "Tool", {.bundleID = "com.x.Tool"});
    EXPECT_EQ(InstalledApps::scan({root / "two", root / "missing", root / "one"}),
              (std::vector<AppInfo>{{second, "com.x.Tool", "Tool"}, {first, "com.x.Tool", "Tool"}}));
}

TEST(InstalledApps, InfoPlistStringGivesOnlyStringValues) {
    TempDir folder;
    const auto bundle = folder / "Mixed.app";
    testing::writeInfoPlist(bundle, {{"CFBundleExecutable", std::string("MixedCore")}, {"CFBundleVersion", std::int64_t{7}}},
                            PlistEncoding::binary);
    EXPECT_EQ(InstalledApps::infoPlistString(bundle, "CFBundleExecutable"), "MixedCore");
    EXPECT_EQ(InstalledApps::infoPlistString(bundle, "CFBundleVersion"), std::nullopt);
    EXPECT_EQ(InstalledApps::infoPlistString(bundle, "CFBundleIdentifier"), std::nullopt);
    EXPECT_EQ(InstalledApps::infoPlistString(folder / "Missing.app", "CFBundleExecutable"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
