#include <gtest/gtest.h>

#include <limits>

#include "kelvo/DiskSpace.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

TEST(DiskSpaceFigures, UsedBytesAndFractionAtTheEdges) {
    EXPECT_EQ((DiskSpace{100, 25}).usedBytes(), 75);
    EXPECT_DOUBLE_EQ((DiskSpace{100, 25}).usedFraction(), 0.75);
    // More free than total (a volume that counts purgeable space): nothing used.
    EXPECT_EQ((DiskSpace{100, 150}).usedBytes(), 0);
    EXPECT_DOUBLE_EQ((DiskSpace{100, 150}).usedFraction(), 0.0);
    EXPECT_DOUBLE_EQ((DiskSpace{0, 0}).usedFraction(), 0.0);
    EXPECT_DOUBLE_EQ((DiskSpace{0, 10}).usedFraction(), 0.0);
    EXPECT_DOUBLE_EQ((DiskSpace{-5, -10}).usedFraction(), 0.0);
    EXPECT_DOUBLE_EQ((DiskSpace{100, 0}).usedFraction(), 1.0);
    // Values that would overflow a plain subtraction stay in range.
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ((DiskSpace{largest, -1}).usedBytes(), largest);
    EXPECT_DOUBLE_EQ((DiskSpace{largest, -1}).usedFraction(), 1.0);
    EXPECT_EQ((DiskSpace{std::numeric_limits<std::int64_t>::min(), 1}).usedBytes(), 0);
}

TEST(DiskSpaceCurrent, ReadsTheVolumeOfAPath) {
    const auto space = DiskSpace::current("/");
    ASSERT_TRUE(space.has_value());
    std::error_code error;
    const auto reference = std::filesystem::space("/", error);
    ASSERT_FALSE(error);
    EXPECT_EQ(space->totalBytes, static_cast<std::int64_t>(reference.capacity));
    // Other programs write meanwhile: the available figure only has to be close.
    EXPECT_NEAR(static_cast<double>(space->freeBytes), static_cast<double>(reference.available), 256.0 * 1024 * 1024);
    EXPECT_GE(space->freeBytes, 0);
    EXPECT_LE(space->freeBytes, space->totalBytes);

    testing::TempDir directory;
    EXPECT_TRUE(DiskSpace::current(directory.path()).has_value());
    EXPECT_EQ(DiskSpace::current(directory / "missing/deeper"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
