// The one rule by which paths are the same or inside one another, and the reading of
// UTF-8 and lowering of case it rests on.
#include <gtest/gtest.h>

#include "vocabulary/Paths.h"
#include "kelvo/platform/TextCase.h"
#include "kelvo/platform/UTF8.h"

namespace kelvo {
namespace {

// "é" written as one character (NFC) and as e + U+0301 (NFD).
const std::string composed = "caf\xC3\xA9", decomposed = "cafe\xCC\x81";

TEST(Paths, CanonicallyEquivalentSpellingsAreOnePathAndNothingElseIs) {
    const struct { std::string a, b; bool same; } cases[] = {
        {"/h/" + composed, "/h/" + decomposed, true},
        {"/h/\xE2\x84\xAB", "/h/\xC3\x85", true},                               // Angstrom sign and A with ring
        {"/h/\xED\x95\x9C", "/h/\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", true},  // a Hangul syllable and its jamo
        {"/h/\xEF\xAC\x81", "/h/fi", false},          // a ligature is only compatibility-equivalent
        {"/h/Caf\xC3\xA9", "/h/" + composed, false},  // case still counts
        // Invalid UTF-8 stays byte for byte; the valid text around it is still normalised.
        {"/h/\xFF/" + decomposed, "/h/\xFF/" + composed, true}, {"/h/\xFF" + decomposed, "/h/\xFF" + composed, true},
        {"/h/\xFF", "/h/\xFE", false}, {"/h/caf\xE9", "/h/" + composed, false},  // a Latin-1 byte is not the character
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.a + " | " + c.b);
        EXPECT_EQ(Paths::same(c.a, c.b), c.same);
        EXPECT_EQ(Paths::same(c.b, c.a), c.same);
        EXPECT_EQ(Paths::isInside(c.a + "/x", c.b), c.same);  // inside-ness follows the same text
    }
}

TEST(Paths, InsideIsStrictOnWholeComponentsAndNothingIsInsideTheRoot) {
    const struct { std::string path, root; bool inside; } cases[] = {
        {"/a/b/c", "/a/b", true}, {"/a/b", "/a/b", false}, {"/a/bc", "/a/b", false}, {"/a", "/", false},
        {"//a", "/", false},      {"/", "/", false},       {"/a", "", false},        {"a", "", false},
    };
    for (const auto& c : cases) EXPECT_EQ(Paths::isInside(c.path, c.root), c.inside) << c.path << " in " << c.root;
}

// Only the shortest form of a code point outside the surrogates and at most U+10FFFF reads.
TEST(UTF8, ReadsOnlyWholeValidSequences) {
    const struct { std::string bytes; std::size_t length; char32_t code; } cases[] = {  // length 0: not a sequence
        {"\x7F", 1, 0x7F},           {"\xC2\x80", 2, 0x80},          {"\xDF\xBF", 2, 0x7FF},
        {"\xE0\xA0\x80", 3, 0x800},  {"\xED\x9F\xBF", 3, 0xD7FF},    {"\xEE\x80\x80", 3, 0xE000},
        {"\xF0\x90\x80\x80", 4, 0x10000}, {"\xF4\x8F\xBF\xBF", 4, 0x10FFFF},
        {"\xC1\x81", 0, 0},          {"\xE0\x9F\xBF", 0, 0},          {"\xF0\x8F\xBF\xBF", 0, 0},  // overlong
        {"\xED\xA0\x80", 0, 0},      {"\xED\xBF\xBF", 0, 0},          // surrogates
        {"\xF4\x90\x80\x80", 0, 0},  {"\xF8\x88\x80\x80\x80", 0, 0},  // beyond U+10FFFF
        {"\x80", 0, 0},              {"\xC3", 0, 0},                  {"\xC3" "A", 0, 0},  // cut or stray
    };
    for (const auto& [bytes, length, code] : cases) {
        const auto decoded = platform::decodeUTF8(bytes, 0);
        EXPECT_EQ(std::pair(decoded ? decoded->length : 0, decoded ? decoded->code : U'\0'), std::pair(length, code)) << bytes;
    }
}

// Names are matched without case (protected applications, family names): only whole valid
// characters are lowered, and a byte that does not read stays itself.
TEST(TextCase, LowersValidCharactersAndKeepsInvalidBytes) {
    const std::pair<std::string, std::string> cases[] = {
        {"@AZ[az", "@az[az"},                           {"Xcode.APP", "xcode.app"},       // ASCII edges of A-Z only
        {"CAF\xC3\x89", "caf\xC3\xA9"},                 {"\xCE\xA3\xCE\x91", "\xCF\x83\xCE\xB1"},  // two bytes, Greek
        {"\xE2\x84\xAB", "\xC3\xA5"},                   // three bytes: the Angstrom sign lowers to a-ring
        {"\xF0\x90\x90\x80Z", "\xF0\x90\x90\xA8z"},     {"\xF0\x9F\x98\x80X", "\xF0\x9F\x98\x80x"},  // four bytes
        {"\xC1\x81", "\xC1\x81"},                       // overlong "A" is not a letter
        {"A\xFF" "B\xFE", "a\xFF" "b\xFE"},             {"A\xFF" "B\xC3", "a\xFF" "b\xC3"},  // stray, cut at the end
        {"\xC3" "A", "\xC3" "a"},  {"\xE2\x84", "\xE2\x84"},  {"\x80Q", "\x80q"},  // lead or continuation alone
    };
    for (const auto& [text, lowered] : cases) EXPECT_EQ(platform::lowercased(text), lowered) << text;
}

}  // namespace
}  // namespace kelvo
