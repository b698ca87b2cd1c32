#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "kelvo/Format.h"

namespace kelvo {
namespace {

// A decimal comma in the C++ global locale (always available, built here) and, where one is
// installed, in the C locale too: neither may reach the text.
struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(FormatBytes, BoundariesAndUnitsWithAFullStopWhateverTheLocale) {
    const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "es_ES.UTF-8");
    const std::vector<std::pair<std::int64_t, std::string>> cases{
        {-5, "0 B"}, {0, "0 B"}, {1023, "1023 B"}, {1024, "1.00 KB"}, {1536, "1.50 KB"},
        // 1.125 and 1.375 are exact ties: rounded as "%.2f" does, to the even hundredth.
        {1152, "1.12 KB"}, {1408, "1.38 KB"}, {1048575, "1024.00 KB"}, {1048576, "1.00 MB"}, {1073741824, "1.00 GB"},
        {1099511627776, "1.00 TB"}, {1099511627776LL * 2048, "2048.00 TB"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(Format::bytes(bytes), text) << bytes;
    std::setlocale(LC_ALL, "C");
    std::locale::global(previous);
}

}  // namespace
}  // namespace kelvo
