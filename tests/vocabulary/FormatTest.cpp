#include <gtest/gtest.h>

#include <clocale>

#include "kelvo/Format.h"

namespace kelvo {
namespace {

TEST(FormatBytes, BoundariesAndUnits) {
    EXPECT_EQ(Format::bytes(-5), "0 B");
    EXPECT_EQ(Format::bytes(0), "0 B");
    EXPECT_EQ(Format::bytes(1), "1 B");
    EXPECT_EQ(Format::bytes(512), "512 B");
    EXPECT_EQ(Format::bytes(1023), "1023 B");
    EXPECT_EQ(Format::bytes(1024), "1.00 KB");
    EXPECT_EQ(Format::bytes(1536), "1.50 KB");
    // 1.125 and 1.375 are exact ties: rounded as "%.2f" does, to the even hundredth.
    EXPECT_EQ(Format::bytes(1152), "1.12 KB");
    EXPECT_EQ(Format::bytes(1408), "1.38 KB");
    EXPECT_EQ(Format::bytes(1048575), "1024.00 KB");
    EXPECT_EQ(Format::bytes(1048576), "1.00 MB");
    EXPECT_EQ(Format::bytes(1073741824), "1.00 GB");
    EXPECT_EQ(Format::bytes(1099511627776), "1.00 TB");
    EXPECT_EQ(Format::bytes(1099511627776LL * 1024), "1024.00 TB");
    EXPECT_EQ(Format::bytes(1099511627776LL * 2048), "2048.00 TB");
}

TEST(FormatBytes, FullStopWhateverTheLocale) {
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8") && !std::setlocale(LC_ALL, "es_ES.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(Format::bytes(1536), "1.50 KB");
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace kelvo
