#include <gtest/gtest.h>

#include "kelvo/platform/TextCase.h"
#include "kelvo/platform/UTF8.h"

namespace kelvo {
namespace {

// Only the shortest form of a code point outside the surrogates and at most U+10FFFF reads.
TEST(UTF8, ReadsOnlyWholeValidSequences) {
    const struct {
        std::string bytes;
        std::size_t length;  // 0: not a sequence
        char32_t code;
    } cases[] = {
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
        EXPECT_EQ(decoded ? decoded->length : 0, length) << bytes;
        EXPECT_EQ(decoded ? decoded->code : 0, code) << bytes;
    }
}

// Protected names are compared lower-cased: letters fold, every byte that does not read
// stays as it is.
TEST(TextCase, FoldsLettersAndKeepsInvalidBytes) {
    const struct {
        std::string text;
        std::string expected;
    } cases[] = {
        {"@AZ[az", "@az[az"},                                // ASCII edges of A-Z only
        {"\xC3\x89" "COLE", "\xC3\xA9" "cole"},              // two-byte letter
        {"\xCE\xA3\xCE\x91", "\xCF\x83\xCE\xB1"},            // Greek
        {"\xF0\x9F\x98\x80X", "\xF0\x9F\x98\x80x"},          // four-byte sequence kept whole
        {"\xC1\x81", "\xC1\x81"},                            // overlong "A" is not a letter
        {"A\xFF" "B\xC3", "a\xFF" "b\xC3"},                  // stray byte, sequence cut at the end
        {"\xC3" "A", "\xC3" "a"},                            // lead byte without continuation
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(platform::lowercased(text), expected) << text;
}

}  // namespace
}  // namespace kelvo
