// The one rule by which paths are the same or inside one another.
#include <gtest/gtest.h>

#include "kelvo/Paths.h"
#include "kelvo/platform/TextCase.h"

namespace kelvo {
namespace {

// "é" written as one character (NFC) and as e + U+0301 (NFD).
const std::string composed = "caf\xC3\xA9";
const std::string decomposed = "cafe\xCC\x81";

TEST(Paths, CanonicallyEquivalentSpellingsAreOnePathAndNothingElseIs) {
    struct Case {
        std::string a, b;
        bool same;
    };
    const Case cases[] = {
        {"/h/" + composed, "/h/" + decomposed, true},
        {"/h/\xE2\x84\xAB", "/h/\xC3\x85", true},           // Angstrom sign and A with ring
        {"/h/\xED\x95\x9C", "/h/\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB", true},  // a Hangul syllable and its jamo
        {"/h/\xEF\xAC\x81", "/h/fi", false},                // a ligature is only compatibility-equivalent
        {"/h/Caf\xC3\xA9", "/h/" + composed, false},        // case still counts
        // Invalid UTF-8 stays byte for byte; the valid text around it is still normalised.
        {"/h/\xFF/" + decomposed, "/h/\xFF/" + composed, true},
        {"/h/\xFF" + decomposed, "/h/\xFF" + composed, true},
        {"/h/\xFF", "/h/\xFE", false},
        {"/h/caf\xE9", "/h/" + composed, false},            // a Latin-1 byte is not the character
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Paths::same(c.a, c.b), c.same) << c.a << " | " << c.b;
        EXPECT_EQ(Paths::same(c.b, c.a), c.same) << c.b << " | " << c.a;
        // Inside-ness follows the same text: x below one spelling lies inside the other.
        EXPECT_EQ(Paths::isInside(c.a + "/x", c.b), c.same) << c.a << " | " << c.b;
    }
}

TEST(Paths, InsideIsStrictOnWholeComponentsAndNothingIsInsideTheRoot) {
    struct Case {
        std::string path, root;
        bool inside;
    };
    const Case cases[] = {
        {"/a/b/c", "/a/b", true},  {"/a/b", "/a/b", false}, {"/a/bc", "/a/b", false},
        {"/a", "/", false},        {"//a", "/", false},     {"/", "/", false},
        {"/a", "", false},         {"a", "", false},
    };
    for (const auto& c : cases) EXPECT_EQ(Paths::isInside(c.path, c.root), c.inside) << c.path << " in " << c.root;
}

// Names are matched without case (protected applications, family names): only whole valid
// characters are lowered, and a byte that is not valid UTF-8 stays itself.
TEST(TextCase, LowersValidCharactersAndKeepsInvalidBytes) {
    const std::pair<std::string, std::string> cases[] = {
        {"Xcode.APP", "xcode.app"},
        {"CAF\xC3\x89", "caf\xC3\xA9"},                          // two bytes
        {"\xE2\x84\xAB", "\xC3\xA5"},                            // three bytes: the Angstrom sign lowers to a-ring
        {"\xF0\x90\x90\x80Z", "\xF0\x90\x90\xA8z"},             // four bytes: Deseret
        {"A\xFF" "B\xFE", "a\xFF" "b\xFE"},                   // bytes no character starts with
        {"\xC3" "A", "\xC3" "a"},                                 // a lead byte without its continuation
        {"\xE2\x84", "\xE2\x84"},                                // cut short at the end
        {"\x80Q", "\x80q"},                                       // a continuation byte alone
    };
    for (const auto& [text, lowered] : cases) EXPECT_EQ(platform::lowercased(text), lowered) << text;
}

}  // namespace
}  // namespace kelvo
