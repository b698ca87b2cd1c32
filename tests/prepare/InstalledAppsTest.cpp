#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/AppBundle.h"
#include "support/TempDir.h"
#include "kelvo/InstalledApps.h"
#include "kelvo/platform/PropertyList.h"

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

TEST(InstalledApps, ReadsTheIdentifierInEveryPropertyListEncoding) {
    const std::vector<std::pair<std::string, std::string>> encodings{
        {"xml", xml},
        {"xml after a UTF-8 byte-order mark", std::string("\xEF\xBB\xBF") + xml},
        {"xml in UTF-16, big-endian", utf16(xmlUTF16, true)},
        {"xml in UTF-16, little-endian", utf16(xmlUTF16, false)},
        {"OpenStep, quoted", R"({ CFBundleName = "Enc"; CFBundleIdentifier = "com.x.Enc"; })"},
        {"OpenStep, bare words, comments, nesting and data",
         "// written by hand\n{\n  /* the identifier */ CFBundleIdentifier = com.x.Enc;\n"
         "  CFBundleDocumentTypes = ( { CFBundleTypeName = Doc; LSItemContentTypes = (a, \"b\",); } );\n"
         "  CFBundleSignature = <0fbd 7777>; NSPrincipalClass = <*I5>;\n}\n"},
        {"OpenStep with escapes", R"({ CFBundleIdentifier = "com.\170.\U0045nc"; })"},
        {"OpenStep in UTF-16", utf16(openStepUTF16, false)},
    };
    for (const auto& [encoding, bytes] : encodings) {
        TempDir folder;
        const auto bundle = folder / "Enc.app";
        testing::writeText(bundle / "Contents/Info.plist", bytes);
        EXPECT_EQ(InstalledApps::scan({folder.path()}), (std::vector<AppInfo>{{bundle, "com.x.Enc", "Enc"}})) << encoding;
    }
    TempDir folder;
    const auto binary = makeApp(folder.path(), "Enc", {.bundleID = "com.x.Enc", .encoding = PlistEncoding::binary});
    EXPECT_EQ(InstalledApps::scan({folder.path()}), (std::vector<AppInfo>{{binary, "com.x.Enc", "Enc"}}));
}

TEST(PropertyList, UTF16AndOpenStepTextIsDecodedWhole) {
    const std::string name = "Caf\xC3\xA9 \xF0\x9F\x98\x80";
    for (const auto& bytes : {utf16(xmlUTF16, true), utf16(openStepUTF16, false)})
        EXPECT_EQ(platform::readTopLevelStrings(bytes),
                  (std::map<std::string, std::string>{{"CFBundleIdentifier", "com.x.Enc"}, {"CFBundleName", name}}));
    // Members that are not strings are left out; a later member replaces an earlier one.
    EXPECT_EQ(platform::readTopLevelStrings(std::string(
                  R"({ A = "tab\tquote\"\101"; B = (1); C = { D = e; }; E = first; E = second; F = x; F = (y); })")),
              (std::map<std::string, std::string>{{"A", "tab\tquote\"A"}, {"E", "second"}}));
}

TEST(PropertyList, WhatIsNotAPropertyListDictionaryGivesNothing) {
    const std::vector<std::pair<std::string, std::string>> unreadable{
        {"odd UTF-16 length", utf16(u"{ A = b; }", true) + "x"},
        {"unpaired surrogate", utf16(u"{ A = \xD83D; }", false)},
        {"only a byte-order mark", "\xEF\xBB\xBF"},
        {"blank", " \n\t"},
        {"top-level array", "( a, b )"},
        {"missing semicolon", "{ A = b }"},
        {"unterminated string", "{ A = \"b; }"},
        {"text after the dictionary", "{ A = b; } c"},
        {"bad data", "{ A = <0x12>; }"},
        {"nesting past 512 levels", "{ A = " + std::string(600, '(') + std::string(600, ')') + "; }"},
        {"UTF-32", std::string("\xFF\xFE\0\0{\0\0\0}\0\0\0", 12)},
    };
    for (const auto& [what, bytes] : unreadable) EXPECT_EQ(platform::readTopLevelStrings(bytes), std::nullopt) << what;
    // Nesting up to the limit is fine.
    EXPECT_TRUE(platform::readTopLevelStrings("{ A = " + std::string(500, '(') + std::string(500, ')') + "; }"));
}

TEST(InstalledApps, InventoryNamesTheBundlesWhoseIdentifierCannotBeRead) {
    TempDir folder;
    const auto readable = makeApp(folder.path(), "Readable", {.bundleID = "com.x.Readable"});
    makeApp(folder.path(), "No Identifier", {.executable = "NoIdentifier"});
    testing::writeInfoPlist(folder / "Numeric.app", {{"CFBundleIdentifier", std::int64_t{42}}});
    testing::writeText(folder / "Garbage.app/Contents/Info.plist", "this is not a property list");
    testing::makeDirectory(folder / "Empty.app");
    // A FIFO in the Info.plist's place is not waited on.
    testing::makeDirectory(folder / "Pipe.app/Contents");
    ASSERT_EQ(::mkfifo((folder / "Pipe.app/Contents/Info.plist").c_str(), 0600), 0);

    auto inventory = InstalledApps::inventory({folder.path()});
    std::sort(inventory.unidentifiedNames.begin(), inventory.unidentifiedNames.end());
    EXPECT_EQ(inventory.apps, (std::vector<AppInfo>{{readable, "com.x.Readable", "Readable"}}));
    EXPECT_EQ(inventory.unidentifiedNames, (std::vector<std::string>{"Empty", "Garbage", "No Identifier", "Numeric", "Pipe"}));
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
