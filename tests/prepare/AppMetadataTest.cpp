#include <gtest/gtest.h>

#include "kelvo/AppMetadata.h"
#include "support/Instants.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using testing::utc;

TEST(LiveAppMetadata, ParsesTheToolsDateWithItsOffsetAndNothingElse) {
    const std::vector<std::pair<std::string, std::optional<TimePoint>>> cases{
        {"2024-03-01 14:22:05 +0000", utc(2024, 3, 1, 14, 22, 5)},
        {"2024-03-01 14:22:05 +0130", utc(2024, 3, 1, 12, 52, 5)},
        {"2024-03-01 00:10:00 -0500", utc(2024, 3, 1, 5, 10, 0)},
        {"2024-02-29 23:59:59 +0000", utc(2024, 2, 29, 23, 59, 59)},
        {"", std::nullopt},
        {"(null)", std::nullopt},
        {"2024-03-01 14:22:05", std::nullopt},
        {"2024-03-01T14:22:05Z", std::nullopt},
        {"2024-03-01 14:22:05 +00:00", std::nullopt},
        {"2024-03-01 14:22:05 +0000 trailing", std::nullopt},
        {"2023-02-29 10:00:00 +0000", std::nullopt},
        {"2024-13-01 10:00:00 +0000", std::nullopt},
        {"2024-03-01 24:00:00 +0000", std::nullopt},
        {"2024-03-01 14:60:00 +0000", std::nullopt},
        {"24-03-01 14:22:05 +0000", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(LiveAppMetadata::parseToolDate(text), expected) << text;
}

TEST(LiveAppMetadata, WithoutTheMetadataToolTakesTheLaterOfTheBundlesAndItsContentsDates) {
    if (std::filesystem::exists("/usr/bin/mdls")) GTEST_SKIP() << "/usr/bin/mdls exists here and would answer first";
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

}  // namespace
}  // namespace kelvo
