#include <gtest/gtest.h>
#include <sys/stat.h>

#include "prepare/AppData.h"
#include "kelvo/AppMetadata.h"
#include "kelvo/DirectorySizer.h"
#include "safety/InstalledApps.h"
#include "vocabulary/MonthsBefore.h"
#include "prepare/OrphanedLeftoverDetector.h"
#include "kelvo/platform/PropertyList.h"
#include "safety/ProtectedApps.h"
#include "prepare/UnusedAppDetector.h"
#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::idsOf, testing::PlistEncoding, testing::TempDir, testing::utc, testing::writeFile;

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
constexpr std::u16string_view openStepUTF16 = u"{ CFBundleName = \"Caf\u00e9 \U0010FFFF\"; CFBundleIdentifier = com.x.Enc; }";
constexpr const char* xml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
    "<key>CFBundleIdentifier</key><string>com.x.Enc</string></dict></plist>";

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
        {"OpenStep in UTF-16", utf16(openStepUTF16, false), true}, {"odd UTF-16 length", utf16(u"{ A = b; }", true) + "x", false},
        {"nesting up to 512 levels",
         "{ A = " + std::string(500, '(') + std::string(500, ')') + "; CFBundleIdentifier = com.x.Enc; }", true},
        {"nesting past 512 levels", "{ A = " + std::string(600, '(') + std::string(600, ')') + "; }", false},
        {"unpaired surrogate", utf16(u"{ A = \xD83D; }", false), false}, {"only a byte-order mark", "\xEF\xBB\xBF", false},
        {"blank", " \n\t", false}, {"no identifier", "{ A = b; }", false}, {"top-level array", "( a, b )", false},
        {"missing semicolon", "{ A = b }", false}, {"unterminated string", "{ A = \"b; }", false},
        {"text after the dictionary", "{ A = b; } c", false}, {"bad data", "{ A = <0x12>; }", false},
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
    // An octal escape takes at most three digits, and octal ones only.
    EXPECT_EQ(platform::readTopLevelStrings(std::string(R"({ A = "\1010\12x\9"; })")),
              (std::map<std::string, std::string>{{"A", "A0\nx9"}}));
}

// Which bundles count and what names one without an identifier: the scenarios (apps.txt).
TEST(InstalledApps, InventoryReadsBinaryListsInFolderOrderAndWaitsOnNoPipe) {
    TempDir root;
    const auto first = testing::makeApp(root / "one", "Readable", {"com.x.Readable", std::nullopt, PlistEncoding::binary});
    const auto second = testing::makeApp(root / "two", "Readable", {"com.x.Readable", std::nullopt, PlistEncoding::binary});
    testing::makeDirectory(root / "one/Pipe.app/Contents");
    ASSERT_EQ(::mkfifo((root / "one/Pipe.app/Contents/Info.plist").c_str(), 0600), 0);
    const auto inventory = InstalledApps::inventory({root / "two", root / "missing", root / "one"});
    EXPECT_EQ(inventory.apps, (std::vector<AppInfo>{{second, "com.x.Readable", "Readable"}, {first, "com.x.Readable", "Readable"}}));
    EXPECT_EQ(inventory.unidentifiedNames, std::vector<std::string>{"Pipe"});
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
        {{}, {"com.x", "com.apple.Safari", "com.applesoft.tool", "group.com.apple.notes", "net.vendor.com.apple.bridge",
              "org.cups.printers", "org.swift.swiftpm", "com.microsoft.autoupdate2", "com.vendor.helper.ShipIt"}},
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

// The places without blanks in their names, and what names no leftover: the scenarios (apps.txt).
TEST(OrphanedLeftoverDetector, OneTargetPerUninstalledApplicationWithItsLocationsInOrder) {
    TempDir home;
    const auto caches = writeFile(home / "Library/Caches/com.old.App/cache.db", 9000).parent_path();
    const auto savedState = writeFile(home / "Library/Saved Application State/com.old.App.savedState/w", 3000).parent_path();
    const auto preferences = writeFile(home / "Library/Preferences/com.old.App.plist", 500);
    // A saved state without its extension names none.
    writeFile(home / "Library/Saved Application State/com.v.Plain/d", 4096);
    writeFile(home / "Library/Application Support/com.v.Support/d", 4096);
    // What occupies nothing is left out.
    testing::makeDirectory(home / "Library/Caches/com.empty.App");
    writeFile(home / "Library/Preferences/com.empty.App.plist", 0);
    const auto targets = OrphanedLeftoverDetector(home.path(), {}, {}, {}, {}).scan();
    ASSERT_EQ(idsOf(targets), (std::vector<std::string>{"leftover:com.old.App", "leftover:com.v.Support"}));
    EXPECT_EQ(targets[0].kind, CleanKind::paths({caches, savedState, preferences}));
    const DirectorySizer sizer;
    EXPECT_EQ(targets[0].sizeBytes, sizer.size(caches) + sizer.size(savedState) + sizer.size(preferences));
}

TEST(UnusedAppDetector, OffersApplicationsLastUsedStrictlyBeforeTheCutOffOfThirtyDayMonths) {
    const auto now = utc(2025, 7, 1);
    const std::vector<std::tuple<int, TimePoint, bool>> cases{
        {6, utc(2025, 1, 1, 23, 59, 59), true}, {6, utc(2025, 1, 2), false}, {0, now - 1s, true},
    };
    for (const auto& [months, lastUsed, offered] : cases) {
        TempDir apps;
        for (const std::string name : {"A", "Undated"}) testing::makeApp(apps.path(), name, {"com.x." + name});
        const auto metadata = std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{{"A.app", lastUsed}});
        const UnusedAppDetector detector({apps.path()}, apps / "home", months, now, metadata,
                                         std::make_shared<StubProcessProbe>(), {}, {});
        EXPECT_EQ(idsOf(detector.scan()), offered ? std::vector<std::string>{"app:com.x.A"} : std::vector<std::string>{})
            << months;
    }
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

// A vendor, a last piece naming an application and whole pieces: the scenarios (apps.txt). Here the
// parts of an identifier without a vendor, and a last piece followed by dots.
TEST(ProtectedApps, PartsOfAnIdentifierWithoutAVendorAndALastPieceBeforeDots) {
    const ProtectedApps apps({"single"}, {"studio"});
    for (const std::string id : {"single.x", "org.vendor.Studio.."}) EXPECT_TRUE(apps.coversBundleID(id)) << id;
}

}  // namespace
}  // namespace kelvo
