#include <gtest/gtest.h>

#include "support/AppBundle.h"
#include "support/Instants.h"
#include "support/TempDir.h"
#include "kelvo/AppMetadata.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;
using testing::TempDir;
using testing::utc;

TEST(LiveAppMetadata, WithoutTheMetadataToolTakesTheLaterModificationDate) {
    if (std::filesystem::exists("/usr/bin/mdls")) GTEST_SKIP() << "/usr/bin/mdls exists here and would answer first";
    TempDir folder;
    const auto older = testing::makeApp(folder.path(), "ContentsLater", {.bundleID = "com.x.A"});
    const auto newer = testing::makeApp(folder.path(), "BundleLater", {.bundleID = "com.x.B"});
    const auto early = utc(2020, 1, 1, 12);
    const auto late = utc(2022, 6, 15, 8, 30, 1);
    testing::setModificationTime(older, early);
    testing::setModificationTime(older / "Contents", late);
    testing::setModificationTime(newer / "Contents", early);
    testing::setModificationTime(newer, late);

    const LiveAppMetadata metadata;
    EXPECT_EQ(metadata.lastUsed(older), late);
    EXPECT_EQ(metadata.lastUsed(newer), late);
}

TEST(LiveAppMetadata, BundleWithoutContentsOrMissingBundle) {
    if (std::filesystem::exists("/usr/bin/mdls")) GTEST_SKIP() << "/usr/bin/mdls exists here and would answer first";
    TempDir folder;
    const auto bare = testing::makeDirectory(folder / "Bare.app");
    testing::setModificationTime(bare, utc(2021, 3, 4));
    const LiveAppMetadata metadata;
    EXPECT_EQ(metadata.lastUsed(bare), utc(2021, 3, 4));
    EXPECT_EQ(metadata.lastUsed(folder / "Missing.app"), std::nullopt);
}

TEST(LiveAppMetadata, ParsesTheToolsDateWithItsOffset) {
    EXPECT_EQ(LiveAppMetadata::parseToolDate("2024-03-01 14:22:05 +0000"), utc(2024, 3, 1, 14, 22, 5));
    EXPECT_EQ(LiveAppMetadata::parseToolDate("2023-01-02 03:04:05 +0000"), utc(2023, 1, 2, 3, 4, 5));
    EXPECT_EQ(LiveAppMetadata::parseToolDate("2024-03-01 14:22:05 +0130"), utc(2024, 3, 1, 12, 52, 5));
    EXPECT_EQ(LiveAppMetadata::parseToolDate("2024-03-01 00:10:00 -0500"), utc(2024, 3, 1, 5, 10, 0));
    EXPECT_EQ(LiveAppMetadata::parseToolDate("2024-02-29 23:59:59 +0000"), utc(2024, 2, 29, 23, 59, 59));
}

TEST(LiveAppMetadata, RejectsNullAndJunk) {
    for (const std::string text : {"", "(null)", "yesterday", "2024-03-01 14:22:05", "2024-03-01T14:22:05Z",
                                   "2024-03-01 14:22:05 +00:00", "2024-03-01 14:22:05 +0000 trailing",
                                   "2023-02-29 10:00:00 +0000", "2024-13-01 10:00:00 +0000", "2024-03-01 24:00:00 +0000",
                                   "2024-03-01 14:60:00 +0000", "24-03-01 14:22:05 +0000"})
        EXPECT_EQ(LiveAppMetadata::parseToolDate(text), std::nullopt) << text;
}

TEST(StubAppMetadata, AnswersByBundleFileName) {
    const auto date = utc(2023, 5, 6);
    const StubAppMetadata metadata({{"Foo.app", date}});
    EXPECT_EQ(metadata.lastUsed("/Applications/Foo.app"), date);
    EXPECT_EQ(metadata.lastUsed("/Users/u/Applications/Foo.app"), date);
    EXPECT_EQ(metadata.lastUsed("/Applications/Bar.app"), std::nullopt);
    EXPECT_EQ(metadata.lastUsed("/Applications/Foo"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
