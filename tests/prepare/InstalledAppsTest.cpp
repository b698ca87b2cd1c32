#include <gtest/gtest.h>
#include <sys/stat.h>

#include "kelvo/InstalledApps.h"
#include "support/AppBundle.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::PlistEncoding;
using testing::TempDir;

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

TEST(InstalledApps, ReadsTheIdentifierInEveryPropertyListEncodingAndWhatIsNotADictionaryIdentifiesNothing) {
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"xml", xml, true},
        {"xml after a UTF-8 byte-order mark", std::string("\xEF\xBB\xBF") + xml, true},
        {"xml in UTF-16, big-endian", utf16(xmlUTF16, true), true},
        {"xml in UTF-16, little-endian", utf16(xmlUTF16, false), true},
        {"OpenStep, quoted", R"({ CFBundleName = "Enc"; CFBundleIdentifier = "com.x.Enc"; })", true},
        {"OpenStep, bare words, comments, nesting and data",
         "// written by hand\n{\n  /* the identifier */ CFBundleIdentifier = com.x.Enc;\n"
         "  CFBundleDocumentTypes = ( { CFBundleTypeName = Doc; LSItemContentTypes = (a, \"b\",); } );\n"
         "  CFBundleSignature = <0fbd 7777>; NSPrincipalClass = <*I5>;\n}\n", true},
        {"OpenStep with escapes", R"({ CFBundleIdentifier = "com.\170.\U0045nc"; })", true},
        {"OpenStep with every escape", R"({ A = "\a\b\f\n\r\t\v\q"; CFBundleIdentifier = "com\056x.Enc"; })", true},
        {"OpenStep in UTF-16", utf16(openStepUTF16, false), true},
        {"nesting up to 512 levels",
         "{ A = " + std::string(500, '(') + std::string(500, ')') + "; CFBundleIdentifier = com.x.Enc; }", true},
        {"odd UTF-16 length", utf16(u"{ A = b; }", true) + "x", false},
        {"unpaired surrogate", utf16(u"{ A = \xD83D; }", false), false},
        {"only a byte-order mark", "\xEF\xBB\xBF", false},
        {"blank", " \n\t", false},
        {"no identifier", "{ A = b; }", false},
        {"top-level array", "( a, b )", false},
        {"missing semicolon", "{ A = b }", false},
        {"unterminated string", "{ A = \"b; }", false},
        {"text after the dictionary", "{ A = b; } c", false},
        {"bad data", "{ A = <0x12>; }", false},
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
    testing::FakeApp readable;
    readable.bundleID = "com.x.Readable";
    readable.encoding = PlistEncoding::binary;
    const auto first = testing::makeApp(folder, "Readable", readable);
    const auto second = testing::makeApp(root / "two", "Readable", readable);
    testing::makeApp(folder, ".Hidden", readable);
    testing::makeApp(folder / "Vendor", "Nested", readable);
    std::filesystem::rename(testing::makeApp(folder / "upper", "Upper", readable), folder / "Upper.APP");
    testing::FakeApp unnamed;
    unnamed.executable = "NoIdentifier";
    testing::makeApp(folder, "No Identifier", unnamed);
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

}  // namespace
}  // namespace kelvo
