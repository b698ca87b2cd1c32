#include <gtest/gtest.h>
#include <sys/stat.h>

#include "prepare/AppData.h"
#include "kelvo/AppMetadata.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/Environment.h"
#include "safety/InstalledApps.h"
#include "vocabulary/MonthsBefore.h"
#include "prepare/OrphanedLeftoverDetector.h"
#include "kelvo/PrepareRegistry.h"
#include "safety/ProtectedApps.h"
#include "prepare/UnusedAppDetector.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::idsOf, testing::idSetOf, testing::PlistEncoding, testing::TempDir, testing::utc, testing::writeFile;

// The bytes of UTF-16 text in one byte order, after its byte-order mark.
std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

constexpr std::u16string_view xmlUTF16 =
    u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<plist version=\"1.0\"><dict>"
    u"<key>CFBundleName</key><string>Caf\u00e9 \U0001F600</string>"
    u"<key>CFBundleIdentifier</key><string>com.x.Enc</string></dict></plist>";
constexpr std::u16string_view openStepUTF16 = u"{ CFBundleName = \"Caf\u00e9 \U0001F600\"; CFBundleIdentifier = com.x.Enc; }";
constexpr const char* xml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
    "<key>CFBundleIdentifier</key><string>com.x.Enc</string></dict></plist>";

fs::path makeApp(const fs::path& folder, const std::string& name, std::optional<std::string> bundleID,
                 std::optional<std::string> executable = std::nullopt, PlistEncoding encoding = PlistEncoding::xml) {
    return testing::makeApp(folder, name, {std::move(bundleID), std::move(executable), encoding});
}

TEST(InstalledApps, ReadsTheIdentifierInEveryPropertyListEncodingAndWhatIsNotADictionaryIdentifiesNothing) {
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"xml", xml, true}, {"xml after a UTF-8 byte-order mark", std::string("\xEF\xBB\xBF") + xml, true},
        {"xml in UTF-16, big-endian", utf16(xmlUTF16, true), true},
        {"xml in UTF-16, little-endian", utf16(xmlUTF16, false), true},
        {"OpenStep, quoted", R"({ CFBundleName = "Enc"; CFBundleIdentifier = "com.x.Enc"; })", true},
        {"OpenStep, bare words, comments, nesting and data",
         "// written by hand\n{\n  /* the identifier */ CFBundleIdentifier = com.x.Enc;\n"
         "  CFBundleDocumentTypes = ( { CFBundleTypeName = Doc; LSItemContentTypes = (a, \"b\",); } );\n"
         "  CFBundleSignature = <0fbd 7777>; NSPrincipalClass = <*I5>;\n}\n", true},
        {"OpenStep with escapes", R"({ CFBundleIdentifier = "com.\170.\U0045\U006ec"; })", true},
        {"OpenStep with CR LF line ends", "{\r\n  CFBundleIdentifier = com.x.Enc;\r\n}\r\n", true},
        {"OpenStep with every escape", R"({ A = "\a\b\f\n\r\t\v\q"; CFBundleIdentifier = "com\056x.Enc"; })", true},
        {"OpenStep in UTF-16", utf16(openStepUTF16, false), true},
        {"nesting up to 512 levels",
         "{ A = " + std::string(500, '(') + std::string(500, ')') + "; CFBundleIdentifier = com.x.Enc; }", true},
        {"odd UTF-16 length", utf16(u"{ A = b; }", true) + "x", false},
        {"unpaired surrogate", utf16(u"{ A = \xD83D; }", false), false}, {"only a byte-order mark", "\xEF\xBB\xBF", false},
        {"blank", " \n\t", false}, {"no identifier", "{ A = b; }", false}, {"top-level array", "( a, b )", false},
        {"missing semicolon", "{ A = b }", false},
        {"unterminated string", "{ A = \"b; }", false},
        {"text after the dictionary", "{ A = b; } c", false}, {"bad data", "{ A = <0x12>; }", false},
        {"nesting past 512 levels", "{ A = " + std::string(600, '(') + std::string(600, ')') + "; }", false},
        {"UTF-32", std::string("\xFF\xFE\0\0{\0\0\0}\0\0\0", 12), false},
    };
    for (const auto& [what, bytes, identified] : cases) {
        TempDir folder;
        const auto bundle = folder / "Enc.app";
        testing::writeText(bundle / "Contents/Info.plist", bytes);
        const auto inventory = InstalledApps::inventory({folder.path()});
        EXPECT_EQ(inventory.apps, (identified ? std::vector<AppInfo>{{bundle, "com.x.Enc", "Enc"}} : std::vector<AppInfo>{})) << what;
        EXPECT_EQ(inventory.unidentifiedNames, (identified ? std::vector<std::string>{} : std::vector<std::string>{"Enc"})) << what;
    }
}

TEST(InstalledApps, InventoryListsVisibleBundlesDirectlyInsideInFolderOrderAndNamesTheUnidentified) {
    TempDir root;
    const auto folder = root / "one";
    const auto readable = [&](const fs::path& where, const std::string& name) {
        return makeApp(where, name, "com.x.Readable", std::nullopt, PlistEncoding::binary);
    };
    const auto first = readable(folder, "Readable");
    const auto second = readable(root / "two", "Readable");
    readable(folder, ".Hidden");
    readable(folder / "Vendor", "Nested");
    fs::rename(readable(folder / "upper", "Upper"), folder / "Upper.APP");
    makeApp(folder, "No Identifier", std::nullopt, "NoIdentifier");
    testing::writeInfoPlist(folder / "Numeric.app", {{"CFBundleIdentifier", std::int64_t{42}}});
    testing::writeText(folder / "Garbage.app/Contents/Info.plist", "this is not a property list");
    testing::makeDirectory(folder / "Empty.app");
    // A FIFO in the Info.plist's place is not waited on.
    testing::makeDirectory(folder / "Pipe.app/Contents");
    ASSERT_EQ(::mkfifo((folder / "Pipe.app/Contents/Info.plist").c_str(), 0600), 0);

    auto inventory = InstalledApps::inventory({root / "two", root / "missing", folder});
    std::sort(inventory.unidentifiedNames.begin(), inventory.unidentifiedNames.end());
    EXPECT_EQ(inventory.apps, (std::vector<AppInfo>{{second, "com.x.Readable", "Readable"}, {first, "com.x.Readable", "Readable"}}));
    EXPECT_EQ(inventory.unidentifiedNames, (std::vector<std::string>{"Empty", "Garbage", "No Identifier", "Numeric", "Pipe"}));
    EXPECT_EQ(InstalledApps::infoPlistString(folder / "Numeric.app", "CFBundleIdentifier"), std::nullopt);
    EXPECT_EQ(InstalledApps::infoPlistString(folder / "No Identifier.app", "CFBundleExecutable"), "NoIdentifier");
}

TEST(LeftoverPaths, TheSevenLocationsThatExistInFixedOrder) {
    testing::TempDir home;
    const std::vector<fs::path> expected{
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
    fs::remove_all(home / "Library/Logs/com.x.y");
    fs::create_directory_symlink(home / "gone", home / "Library/Logs/com.x.y");  // dangling: not there
    fs::create_directory_symlink(home / "Library/Caches", home / "Library/Logs/com.x.live");
    EXPECT_EQ(AppData::leftoverPaths("com.x.y", home.path()).size(), 6u);
    EXPECT_EQ(AppData::leftoverPaths("com.x.live", home.path()),
              std::vector<fs::path>{home / "Library/Logs/com.x.live"});
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
        {"2024-03-01 14:22:05 +0000", utc(2024, 3, 1, 14, 22, 5)}, {"2024-03-01 14:22:05 +0130", utc(2024, 3, 1, 12, 52, 5)},
        {"2024-03-01 00:10:00 -0500", utc(2024, 3, 1, 5, 10, 0)}, {"2024-02-29 23:59:59 +0000", utc(2024, 2, 29, 23, 59, 59)},
        {"", std::nullopt}, {"(null)", std::nullopt}, {"2024-03-01 14:22:05", std::nullopt},
        {"2024-03-01T14:22:05Z", std::nullopt}, {"2024-03-01 14:22:05 +00:00", std::nullopt},
        {"2024-03-01 14:22:05 +0000 trailing", std::nullopt}, {"2023-02-29 10:00:00 +0000", std::nullopt},
        {"2024-13-01 10:00:00 +0000", std::nullopt}, {"2024-03-01 24:00:00 +0000", std::nullopt},
        {"2024-03-01 14:60:00 +0000", std::nullopt}, {"24-03-01 14:22:05 +0000", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(LiveAppMetadata::parseToolDate(text), expected) << text;
}

TEST(LiveAppMetadata, WithoutTheMetadataToolTakesTheLaterOfTheBundlesAndItsContentsDates) {
    if (fs::exists("/usr/bin/mdls")) GTEST_SKIP() << "/usr/bin/mdls exists here and would answer first";
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

std::vector<CleanTarget> orphans(const fs::path& home, std::set<std::string> installed = {},
                              std::vector<std::string> unidentifiedNames = {}) {
    return OrphanedLeftoverDetector(home, std::move(installed), PrepareRegistry::protectedBundleIDs(),
                                    PrepareRegistry::protectedNames(), std::move(unidentifiedNames))
        .scan();
}

TEST(OrphanedLeftoverDetector, OneTargetPerUninstalledApplicationWithItsLocationsInOrder) {
    TempDir home;
    const auto caches = writeFile(home / "Library/Caches/com.old.App/cache.db", 9000).parent_path();
    const auto savedState = writeFile(home / "Library/Saved Application State/com.old.App.savedState/w", 3000).parent_path();
    const auto preferences = writeFile(home / "Library/Preferences/com.old.App.plist", 500);
    // Neither a lock file, the ByHost folder nor a saved state without its extension names one.
    writeFile(home / "Library/Preferences/com.lock.Only.plist.lockfile", 500);
    writeFile(home / "Library/Preferences/ByHost/com.host.App.0000.plist", 500);
    writeFile(home / "Library/Saved Application State/com.v.Plain/d", 4096);
    // Every other place contributes, and what occupies nothing is left out.
    writeFile(home / "Library/Application Support/com.v.Support/d", 4096);
    writeFile(home / "Library/Containers/com.v.Container/d", 4096);
    writeFile(home / "Library/HTTPStorages/com.v.Http/d", 4096);
    writeFile(home / "Library/Logs/com.B.Upper/d", 4096);
    testing::makeDirectory(home / "Library/Caches/com.empty.App");
    writeFile(home / "Library/Preferences/com.empty.App.plist", 0);

    const auto targets = orphans(home.path());
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"leftover:com.B.Upper", "leftover:com.old.App", "leftover:com.v.Container",
                                                        "leftover:com.v.Http", "leftover:com.v.Support"}));
    ASSERT_EQ(targets.size(), 5u);
    EXPECT_EQ(targets[1].kind, CleanKind::paths({caches, savedState, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(targets[1].sizeBytes, sizer.size(caches) + sizer.size(savedState) + sizer.size(preferences));
    EXPECT_EQ(std::tuple(targets[1].family, targets[1].level, targets[1].regenCost),
              std::tuple(Family::appLeftovers, Level::moderate, RegenCost::redownload));
    EXPECT_TRUE(orphans(home / "missing").empty());
}

TEST(OrphanedLeftoverDetector, ProtectedInstalledAndPossiblyUnidentifiedApplicationsKeepTheirData) {
    TempDir home;
    for (const std::string name : {
             "com.google.SomethingElse",    // protected vendor
             "com.vendor.Terminal",         // last piece is a protected application name
             "com.microsoft.VSCode.ShipIt", // part of a protected application
             "com.apple.Music",             // the system's
             "com.vendor.app.Helper",       // helper of something
             "Homebrew", "com.x",           // not bundle identifiers
             "com.inst.App", "com.inst.App.Agent",  // installed, and a part of it
             "com.vendor.FooBar",           // an unidentified "Foo Bar": the last piece, blanks and case aside
             "com.foo-bar.helper",          // a middle piece, "-" aside
             "com.x.tool.kit.agent",        // a run of pieces is the dotted name "Tool.Kit"
             "com.vendor.Terminals",        // offered: not a protected name
             "com.vendor.FooBarista",       // offered: a piece must match whole
             "com.x.kit",                   // offered: "kit" alone is not "Tool.Kit"
         })
        writeFile(home / "Library/Caches" / name / "data", 4096);
    EXPECT_EQ(idsOf(orphans(home.path(), {"com.inst.App"}, {"Foo Bar", "Tool.Kit"})),
              (std::vector<std::string>{"leftover:com.vendor.FooBarista", "leftover:com.vendor.Terminals", "leftover:com.x.kit"}));
}

TEST(OrphanedLeftoverDetector, ProtectionStepsWithTheDetectorsOwnLists) {
    const OrphanedLeftoverDetector detector("/home/u", {}, {"com.acme.Studio", "single"}, {"studio"});
    for (const std::string id : {"com.acme.Studio", "com.acme.Studio.Helper", "com.acme.Other", "org.vendor.STUDIO",
                                 "org.vendor.studio.", "single.x"})
        EXPECT_TRUE(detector.isProtected(id)) << id;
    for (const std::string id : {"com.acmeX.Other", "org.vendor.Studios"}) EXPECT_FALSE(detector.isProtected(id)) << id;
}

const auto now = utc(2025, 7, 1);
const auto longAgo = utc(2020, 1, 1);

struct Scenario {
    std::vector<fs::path> appDirs;
    std::map<std::string, TimePoint> dates;
    std::vector<std::string> running = {};
    std::vector<std::string> runningFragments = {};
    int months = 6;
};

std::vector<CleanTarget> unused(const Scenario& scenario, const fs::path& home) {
    return UnusedAppDetector(scenario.appDirs, home, scenario.months, now, std::make_shared<StubAppMetadata>(scenario.dates),
                             std::make_shared<StubProcessProbe>(scenario.running, scenario.runningFragments),
                             PrepareRegistry::protectedBundleIDs(), PrepareRegistry::protectedNames())
        .scan();
}

TEST(UnusedAppDetector, OffersApplicationsLastUsedStrictlyBeforeTheCutOffOfThirtyDayMonths) {
    const std::vector<std::tuple<int, TimePoint, bool>> cases{
        {6, utc(2025, 1, 1, 23, 59, 59), true}, {6, utc(2025, 1, 2), false}, {6, utc(2025, 6, 1), false},
        {0, now - 1s, true}, {0, now, false},
    };
    for (const auto& [months, lastUsed, offered] : cases) {
        TempDir apps;
        makeApp(apps.path(), "A", "com.x.A");
        makeApp(apps.path(), "Undated", "com.x.Undated");
        const auto targets = unused({.appDirs = {apps.path()}, .dates = {{"A.app", lastUsed}}, .months = months}, apps / "home");
        EXPECT_EQ(idsOf(targets), offered ? std::vector<std::string>{"app:com.x.A"} : std::vector<std::string>{}) << months;
    }
}

TEST(UnusedAppDetector, TheTargetHoldsTheBundleThenItsDataOrTheBundleAloneWithoutAnIdentifier) {
    TempDir root;
    const auto home = root / "home";
    const auto bundle = makeApp(root / "Applications", "Old", "com.x.Old");
    const auto plain = makeApp(root / "Applications", "Plain", std::nullopt, "Plain");
    const auto caches = testing::writeFile(home / "Library/Caches/com.x.Old/db", 6000).parent_path();
    const auto preferences = testing::writeFile(home / "Library/Preferences/com.x.Old.plist", 300);
    // Data under the bundle's name is not the application's: without an identifier none is taken.
    testing::writeFile(home / "Library/Caches/Plain/db", 6000);
    const auto targets =
        unused({.appDirs = {root / "Applications"}, .dates = {{"Old.app", longAgo}, {"Plain.app", longAgo}}}, home);
    ASSERT_EQ(idsOf(targets), (std::vector<std::string>{"app:com.x.Old", "app-path:" + plain.string()}));
    EXPECT_EQ(targets[0].kind, CleanKind::paths({bundle, caches, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(targets[0].sizeBytes, sizer.size(bundle) + sizer.size(caches) + sizer.size(preferences));
    EXPECT_EQ(std::tuple(targets[0].family, targets[0].level, targets[0].regenCost),
              std::tuple(Family::unusedApps, Level::aggressive, RegenCost::redownload));
    EXPECT_EQ(targets[1].kind, CleanKind::paths({plain}));
    EXPECT_EQ(targets[1].sizeBytes, sizer.size(plain));
}

TEST(UnusedAppDetector, ProtectedRunningHiddenAndNestedApplicationsAreNeverOffered) {
    TempDir root;
    const auto system = root / "Applications";
    const auto user = root / "home/Applications";
    std::map<std::string, TimePoint> dates;
    for (const auto& [folder, name, id] : std::vector<std::tuple<fs::path, std::string, std::string>>{
             {user, "Second", "com.x.Second"}, {system, "First", "com.x.First"}, {user / "Tools", "Nested", "com.x.Nested"},
             {system, ".Hidden", "com.x.Hidden"}, {system, "Docker", "com.example.docker"},
             {system, "SAFARI", "com.example.safari"}, {system, "Renamed IDE", "com.apple.dt.Xcode"},
             {system, "Running", "com.x.Running"}, {system, "Core", "com.x.Core"}, {system, "ByPath", "com.x.ByPath"}}) {
        makeApp(folder, name, id, name + "Core");
        dates[name + ".app"] = longAgo;
    }
    // Only the identifiers themselves count here, not their vendors: the executor refuses those.
    makeApp(system, "Keep", "com.google.Keep");
    dates["Keep.app"] = longAgo;
    fs::rename(makeApp(system / "upper", "Upper", "com.x.Upper"), system / "Upper.APP");
    dates["Upper.APP"] = longAgo;
    const auto targets =
        unused({.appDirs = {system, root / "missing", user},
              .dates = dates,
              .running = {"Running", "CoreCore", "Second Helper", "first"},
              .runningFragments = {(system / "ByPath.app/Contents/MacOS/ByPathCore").string() + " --background"}},
             root / "home");
    EXPECT_EQ(testing::idSetOf(targets), (std::set<std::string>{"app:com.google.Keep", "app:com.x.First", "app:com.x.Second"}));
    EXPECT_EQ(targets.back().id, "app:com.x.Second");  // the folders in their order
}

// The leftovers the first detector offers, with the installed applications found in `appIndexDirs`.
std::set<std::string> leftovers(const fs::path& home, const std::optional<std::vector<fs::path>>& appIndexDirs) {
    Environment env;
    env.home = home;
    env.tmpDir = home / "tmp";
    env.catalog = CatalogProfile::macos;
    const auto preparers = PrepareRegistry::makePreparers(
        env, 6, utc(2025, 7, 1), std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{}),
        [] { return std::vector<SimRuntime>{}; }, appIndexDirs, std::make_shared<StubProcessProbe>());
    EXPECT_EQ(preparers.at(0)->id(), "app-leftovers");
    return idSetOf(preparers.at(0)->scan());
}

TEST(MakePreparers, InstalledApplicationsComeFromTheIndexFoldersOrTheStandardOnesAtEachCall) {
    testing::TempDir home;
    for (const auto& [folder, name] : std::vector<std::pair<fs::path, std::string>>{{home / "Applications", "Kept"},
                                                                                    {home / "Elsewhere", "Other"}}) {
        makeApp(folder, name, "com.x." + name);
        testing::writeFile(home / "Library/Caches" / ("com.x." + name) / "data", 4096);
    }
    // An empty list: nothing counts as installed; none: the standard folders, of which only
    // home/Applications exists here; given folders replace the standard ones.
    EXPECT_EQ(leftovers(home.path(), std::vector<fs::path>{}), (std::set<std::string>{"leftover:com.x.Kept", "leftover:com.x.Other"}));
    EXPECT_EQ(leftovers(home.path(), std::nullopt), (std::set<std::string>{"leftover:com.x.Other"}));
    EXPECT_EQ(leftovers(home.path(), std::vector<fs::path>{home / "Elsewhere"}), (std::set<std::string>{"leftover:com.x.Kept"}));
    // Listed again at each call: an application installed since counts.
    fs::rename(home / "Elsewhere/Other.app", home / "Applications/Other.app");
    EXPECT_EQ(leftovers(home.path(), std::nullopt), std::set<std::string>{});
}

TEST(MonthsBefore, ThirtyDayMonthsAndTheClocksLimits) {
    using TimePoint = std::chrono::system_clock::time_point;
    const auto now = utc(2024, 6, 30);
    const std::vector<std::tuple<TimePoint, int, TimePoint>> cases{
        {now, 3, utc(2024, 4, 1)}, {now, 0, now}, {now, -1, now + 30 * 24h}, {now + 250ms, 1, now + 250ms - 30 * 24h},
        {now, std::numeric_limits<int>::max(), TimePoint::min()}, {now, std::numeric_limits<int>::min(), TimePoint::max()},
        {TimePoint::min() + 24h, 1, TimePoint::min()},
    };
    for (const auto& [from, months, expected] : cases) EXPECT_EQ(monthsBefore(from, months), expected) << months;
}

TEST(ProtectedApps, TheBrandIsTheFirstTwoPiecesOfADottedName) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> brands{
        {"a.b", "a.b"}, {"a.b.c.d", "a.b"}, {"a..b", std::nullopt}, {"com", std::nullopt}, {".x.y", std::nullopt}};
    for (const auto& [text, brand] : brands) EXPECT_EQ(ProtectedApps::brandPrefix(text), brand) << text;
}

}  // namespace
}  // namespace kelvo
