#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/VersionedDirCleaner.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::allocatedBytesBelow;
using testing::makeDirectory;
using testing::writeFile;

VersionedDirCleaner makeVersioned(const fs::path& parent, std::vector<std::string> prefixes,
                                  std::string id = "versions", std::string name = "Versions") {
    return VersionedDirCleaner(std::move(id), std::move(name), Family::androidGradle, parent, std::move(prefixes),
                               Level::aggressive, Reversibility::regenerable, RegenCost::redownload);
}

std::vector<std::string> idsOf(const std::vector<CleanTarget>& targets) {
    std::vector<std::string> ids;
    for (const auto& target : targets) ids.push_back(target.id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

TEST(VersionedDirCleaner, PrefixAdmitsOnlyMatchingDirectories) {
    TempDir temp;
    writeFile(temp / "AndroidStudio2024.1/caches/index", 5000);
    writeFile(temp / "IntelliJIdea2024.1/caches/index", 5000);
    writeFile(temp / "AndroidStudio.log", 5000);
    writeFile(temp / "androidstudio2023.3/caches/index", 5000);  // the prefix test is case-sensitive
    const auto targets = makeVersioned(temp.path(), {"AndroidStudio"}, "androidstudio-caches").scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"androidstudio-caches/AndroidStudio2024.1"}));
}

TEST(VersionedDirCleaner, AnyOfSeveralPrefixesAdmits) {
    TempDir temp;
    writeFile(temp / "metro-abc/file", 100);
    writeFile(temp / "haste-map-xyz/file", 100);
    writeFile(temp / "flutter_tools.123/file", 100);
    writeFile(temp / "systemd-private/file", 100);
    writeFile(temp / "xmetro-abc/file", 100);  // a prefix must match at the start
    const auto targets = makeVersioned(temp.path(), {"metro-", "react-native-", "haste-map-", "flutter_tools."}, "s").scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"s/flutter_tools.123", "s/haste-map-xyz", "s/metro-abc"}));
}

TEST(VersionedDirCleaner, WithoutPrefixesOffersEveryVisibleNonEmptyRealDirectory) {
    TempDir temp;
    writeFile(temp / "parent/v1/data", 4096);
    writeFile(temp / "parent/.hidden/data", 4096);
    makeDirectory(temp / "parent/empty");
    writeFile(temp / "parent/emptyish/.keep", 0);  // a zero-length file allocates nothing
    writeFile(temp / "parent/plain-file", 4096);
    writeFile(temp / "elsewhere/data", 4096);
    fs::create_directory_symlink(temp / "elsewhere", temp / "parent/linked");
    const auto targets = makeVersioned(temp / "parent", {}, "v").scan();
    EXPECT_EQ(idsOf(targets), (std::vector<std::string>{"v/v1"}));
}

TEST(VersionedDirCleaner, TargetIdNameAndFieldsFollowTheEntry) {
    TempDir temp;
    const fs::path entry = temp / "ndk/26.1.10909125";
    writeFile(entry / "toolchains/clang", 20000);
    writeFile(entry / "source.properties", 300);
    const auto targets = makeVersioned(temp / "ndk", {}, "android-ndk", "NDK").scan();
    ASSERT_EQ(targets.size(), 1u);
    const auto& target = targets[0];
    EXPECT_EQ(target.id, "android-ndk/26.1.10909125");
    EXPECT_EQ(target.name, "NDK: 26.1.10909125");
    EXPECT_EQ(target.family, Family::androidGradle);
    EXPECT_EQ(target.kind, CleanKind::paths({entry}));
    EXPECT_EQ(target.sizeBytes, allocatedBytesBelow(entry));
    EXPECT_GT(target.sizeBytes, 0);
    EXPECT_EQ(target.level, Level::aggressive);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::redownload);
    EXPECT_EQ(target.notes, "");
}

TEST(VersionedDirCleaner, MissingOrNonDirectoryParentOffersNothing) {
    TempDir temp;
    EXPECT_TRUE(makeVersioned(temp / "missing", {}).scan().empty());
    writeFile(temp / "a-file", 4096);
    EXPECT_TRUE(makeVersioned(temp / "a-file", {}).scan().empty());
}

}  // namespace
}  // namespace kelvo
