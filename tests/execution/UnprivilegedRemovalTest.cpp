// Removal under permission bits. Root ignores them, so each execute runs in a child that
// has dropped to uid/gid 65534, on a tree handed over to that user.
#include <sys/stat.h>

#include "ExecutionSupport.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/L10n.h"
#include "support/Unprivileged.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using fs::path;
using enum Reason::Code;

unsigned modeOf(const path& location) {
    struct stat status {};
    if (::lstat(location.c_str(), &status) != 0) return 0;
    return status.st_mode & 07777;
}

using UnprivilegedRemovalTest = ExecutionTest;

// A locked parent is never opened up; a read-only tree inside one's own folder is; what
// cannot be looked at is never counted as gone.
TEST_F(UnprivilegedRemovalTest, ReadOnlyTreesAreOpenedUpButNeverTheParentOfATargetOrAnUnreadableOne) {
    const path tree = home / "cache/readonly";
    writeFile(tree / "a/b/file", 9000);
    writeFile(tree / "a/secret/hidden", 4000);
    writeFile(tree / "no-search/file", 3000);
    writeFile(tree / "write-search-only/file", 3000);
    writeFile(tree / "top-file", 100);
    const path neighbour = writeFile(home / "cache/neighbour/file", 100).parent_path();
    const path locked = home / "cache/locked";
    const path file = writeFile(locked / "item.log", 4000);
    const path folder = writeFile(locked / "folder/inner", 4000).parent_path();
    const path closedItem = writeFile(home / "cache/closed/item", 4000);
    // The removing user cannot see into the three locked folders before they are opened
    // up, so what it measures as freed leaves their content out.
    const std::int64_t unseen = allocatedBytesBelow(tree / "a/secret") + allocatedBytesBelow(tree / "no-search") +
                                allocatedBytesBelow(tree / "write-search-only");
    const std::int64_t expected = DirectorySizer().measure(tree).bytes - unseen + allocatedBytes(folder / "inner");
    ASSERT_GT(unseen, 0);
    if (runningAsRoot()) chownTree(home, nobodyId, nobodyId);  // otherwise the files are ours already
    for (const auto& entry : fs::recursive_directory_iterator(tree))
        fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0555) : fs::perms(0444));
    for (const auto& [place, mode] : {std::pair{tree / "a/secret", 0}, {tree / "no-search", 0600}, {tree / "write-search-only", 0300},
                                      {tree, 0555}, {neighbour, 0555}, {locked, 0555}, {home / "cache/closed", 0}})
        fs::permissions(place, fs::perms(mode));

    L10n::bundle();  // loaded before the fork: the child may not be allowed to read the texts
    const auto run = runAsUnprivileged([&] {
        return summary(executor().execute({pathTarget("readonly", {tree}), pathTarget("file", {file}),
                                           pathTarget("folder", {folder}), pathTarget("closed", {closedItem})}));
    }, nobodyId);
    fs::permissions(home / "cache/closed", fs::perms(0755));
    ASSERT_TRUE(run.output) << run.failure;
    // The folder's content could go (the folder is ours), the folder itself could not.
    EXPECT_EQ(*run.output, lines({"deleted readonly", "partial folder", skipped("file", noPermission, "item.log"),
                                  skipped("folder", systemRemnant, "folder"), skipped("closed", ownerUnknown, closedItem.string()),
                                  "freed " + std::to_string(expected)}));
    EXPECT_FALSE(present(tree));
    // Only the removed tree had its bits changed.
    EXPECT_EQ(std::tuple(modeOf(neighbour), modeOf(locked), modeOf(home / "cache")), std::tuple(0555u, 0555u, 0755u));
    EXPECT_TRUE(fs::exists(neighbour / "file") && fs::exists(file) && fs::exists(closedItem) && fs::is_directory(folder));
    EXPECT_FALSE(present(folder / "inner"));
}

}  // namespace
}  // namespace kelvo::testing
