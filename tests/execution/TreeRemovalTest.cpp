#include <fcntl.h>

#include <cstring>

#include "ExecutionSupport.h"
#include "kelvo/platform/TreeRemoval.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using fs::path;
using namespace platform;
using TreeRemovalTest = ExecutionTest;

int openDescriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

// Work sharing that hands nothing over: the walk asks for an idle thread at every step,
// which makes the question a place to watch it (or to act against it) step by step.
WorkSharing everyStep(std::function<void()> step) {
    return {.submit = [](std::function<void()> task) { task(); },
            .waitForAll = [] {},
            .hasIdleWorker = [step = std::move(step)] {
                step();
                return false;
            }};
}

TEST_F(TreeRemovalTest, DeepBranchesKeepFewDescriptorsOpenAndLoseNoSibling) {
    const path tree = makeDirectory(root / "tree"), sibling = writeFile(root / "sibling/keep", 10);
    // Each branch is deeper than a walk keeps open, so the top folder is closed and
    // reopened while its other branches still wait to be removed.
    for (int branch = 0; branch < 12; ++branch)
        writeDeepFile(makeFolderChain(tree / ("branch-" + std::to_string(branch)), 48) / "f", 4);
    const int before = openDescriptors();
    int peak = 0;

    EXPECT_FALSE(removeTree(tree, {.sharing = everyStep([&] { peak = std::max(peak, openDescriptors()); })}));
    EXPECT_FALSE(deepExists(tree));
    EXPECT_TRUE(fs::exists(sibling));
    EXPECT_GT(peak, 0);
    EXPECT_LE(peak - before, 36) << "descriptors should not grow with the depth of the tree";
}

TEST_F(TreeRemovalTest, AFolderMovedOutMidWalkIsNotFollowedBackUp) {
    const path tree = makeDirectory(root / "tree");
    for (int canary = 0; canary < 20; ++canary) writeFile(outside / ("canary" + std::to_string(canary)), 10);
    const std::string before = listing(outside);
    path deepest = tree;
    for (int level = 0; level < 60; ++level) {
        deepest /= "l" + std::to_string(level);
        writeFile(deepest / "file", 10);
    }
    // Once the walk is at the bottom, with the upper levels closed, level 1 moves outside:
    // going back up through "..", the walk would come out in the outside folder.
    bool moved = false;
    const auto moveLevelOne = [&] {
        if (moved || deepExists(deepest / "file")) return;
        moved = ::rename((tree / "l0/l1").c_str(), (outside / "moved").c_str()) == 0;
    };

    EXPECT_EQ(removeTree(tree, {.sharing = everyStep(moveLevelOne)}).value(), ESTALE);
    ASSERT_TRUE(moved);
    EXPECT_EQ(listing(outside), before + "moved/\n");
    EXPECT_TRUE(fs::is_directory(tree / "l0"));
}

TEST_F(TreeRemovalTest, EntriesAddedWhileTheTreeGoesGoToo) {
    const path tree = root / "tree", deep = writeFile(tree / "a/b/c/file", 10);
    writeFile(tree / "other", 10);
    // The top folder has been read to its end by the time the walk is this deep.
    bool added = false;
    const auto addLateFile = [&] {
        if (added || deepExists(deep)) return;
        writeFile(tree / "late", 10);
        added = true;
    };

    EXPECT_FALSE(removeTree(tree, {.sharing = everyStep(addLateFile)}));
    ASSERT_TRUE(added);
    EXPECT_FALSE(deepExists(tree));
}

TEST_F(TreeRemovalTest, AFolderFarWiderThanOneListingGoesWithItsSubfolders) {
    // Hard links, in memory where possible: names are what counts here.
    const path wide = makeDirectory(root / "wide"), sibling = writeFile(root / "sibling", 10);
    writeFile(wide / "original", 10);
    const int fd = ::open(wide.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    constexpr int names = 400'000;
    int made = 0;
    for (; made < names; ++made) {
        if (made % 100'000 == 0) writeFile(wide / ("sub" + std::to_string(made)) / "file", 10);
        if (::linkat(fd, "original", fd, ("n" + std::to_string(made)).c_str(), 0) != 0) break;
    }
    ::close(fd);

    if (made == names) {
        EXPECT_FALSE(removeTree(wide));
        EXPECT_FALSE(deepExists(wide));
    }
    EXPECT_TRUE(fs::exists(sibling));
    ASSERT_EQ(made, names) << "could not make the names: " << std::strerror(errno);
}

TEST_F(TreeRemovalTest, OnlyTheNamedItemGoesAndOnlyThroughAStandardPathFreeOfLinks) {
    const path file = writeFile(root / "dir/file", 100), inside = writeFile(root / "target/inside", 100);
    fs::create_directory_symlink(root / "target", root / "dir/link");
    const path real = writeFile(root / "real/sub/tree/file", 100).parent_path();
    fs::create_directory_symlink(root / "real", root / "via");
    const path plain = writeFile(root / "plain", 10);
    const path tree = real.parent_path();
    using enum std::errc;
    const std::pair<path, std::optional<std::errc>> cases[] = {
        {root / "via/sub/tree", too_many_symbolic_link_levels}, {plain / "x", not_a_directory},
        {root / "dir/missing", no_such_file_or_directory}, {tree / "tree/..", invalid_argument},
        {tree / "tree/../tree", invalid_argument}, {tree / "./tree", invalid_argument}, {"relative/path", invalid_argument},
        {"/", invalid_argument}, {"", invalid_argument},
        // A link goes as a link, a file as a file; repeated and trailing separators are harmless.
        {root / "dir/link", {}}, {file, {}}, {path(root.path().string() + "//real/sub/tree/"), {}},
    };
    for (const auto& [item, error] : cases)
        EXPECT_EQ(removeTree(item), error ? std::make_error_code(*error) : std::error_code{}) << item;
    EXPECT_FALSE(deepExists(root / "dir/link") || deepExists(file) || deepExists(real));
    for (const path& kept : {inside, plain, root / "dir", tree, root / "via"}) EXPECT_TRUE(deepExists(kept)) << kept;
}

// A file system mounted inside the tree is not part of it. Runs in a child with a mount
// namespace of its own, so the mount disappears with it whatever happens.
TEST_F(TreeRemovalTest, MountedFoldersInsideTheTreeAreNotEntered) {
    const path tree = root / "tree", mountPoint = makeDirectory(tree / "mounted"), canaryInMount = mountPoint / "canary";
    writeFile(tree / "own/file", 100);

    const int status = inPrivateMount(mountPoint, [&] {
        writeFile(canaryInMount, 10);
        const auto error = removeTree(tree, {.addOwnerPermissions = true, .sharing = {}});
        // The mount was left alone with its content and the rest went.
        return fs::exists(canaryInMount) && !deepExists(tree / "own") && error == std::errc::cross_device_link;
    });
    if (status == 77) GTEST_SKIP() << "no private mount namespace can be made here (needs CAP_SYS_ADMIN)";
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace kelvo::testing
