#include <gtest/gtest.h>

#include "kelvo/VersionedDirCleaner.h"
#include "support/TargetIds.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::writeFile;

VersionedDirCleaner makeVersioned(const fs::path& parent, std::vector<std::string> prefixes) {
    return VersionedDirCleaner("v", "Versions", Family::androidGradle, parent, std::move(prefixes), Level::aggressive,
                               Reversibility::regenerable, RegenCost::redownload);
}

TEST(VersionedDirCleaner, OffersEachVisibleNonEmptyRealSubfolderWhoseNameStartsWithAPrefixMeasuredAndNamedAfterIt) {
    TempDir temp;
    const fs::path parent = temp / "parent";
    for (const char* name : {"metro-abc", "haste-map-xyz", "xmetro-abc", "Metro-upper", "other", ".metro-hidden"})
        writeFile(parent / name / "data", 4096);
    testing::makeDirectory(parent / "metro-empty");
    writeFile(parent / "metro-zero/.keep", 0);  // a zero-length file allocates nothing
    writeFile(parent / "metro-file", 4096);
    writeFile(temp / "elsewhere/data", 4096);
    fs::create_directory_symlink(temp / "elsewhere", parent / "metro-linked");
    EXPECT_EQ(testing::idSetOf(makeVersioned(parent, {"metro-", "haste-map-"}).scan()),
              (std::set<std::string>{"v/haste-map-xyz", "v/metro-abc"}));
    // Without prefixes every such subfolder.
    EXPECT_EQ(testing::idSetOf(makeVersioned(parent, {}).scan()),
              (std::set<std::string>{"v/Metro-upper", "v/haste-map-xyz", "v/metro-abc", "v/other", "v/xmetro-abc"}));
    // Each target is named after its subfolder and measures it.
    const auto targets = makeVersioned(parent, {"haste-"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].name, "Versions: haste-map-xyz");
    EXPECT_EQ(targets[0].kind, CleanKind::paths({parent / "haste-map-xyz"}));
    EXPECT_EQ(targets[0].sizeBytes, testing::allocatedBytesBelow(parent / "haste-map-xyz"));
    EXPECT_EQ(targets[0].level, Level::aggressive);
    EXPECT_TRUE(makeVersioned(temp / "missing", {}).scan().empty());
    EXPECT_TRUE(makeVersioned(parent / "metro-file", {}).scan().empty());
}

}  // namespace
}  // namespace kelvo
