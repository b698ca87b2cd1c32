#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

#include "ExecutionSupport.h"
#include "kelvo/platform/TreeRemoval.h"
#include "support/DeepTree.h"
#include "support/TempDir.h"

namespace kelvo::platform {
namespace {

namespace fs = std::filesystem;
using fs::path;
using kelvo::testing::TempDir;
using kelvo::testing::listing;
using kelvo::testing::present;
using kelvo::testing::makeDirectory;
using kelvo::testing::writeFile;

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

TEST(TreeRemoval, DeepBranchesKeepFewDescriptorsOpenAndLoseNoSibling) {
    TempDir root;
    const path tree = makeDirectory(root / "tree");
    const path sibling = writeFile(root / "sibling/keep", 10);
    // Each branch is deeper than a walk keeps open, so the top folder is closed and
    // reopened while its other branches still wait to be removed.
    for (int branch = 0; branch < 12; ++branch)
        kelvo::testing::writeDeepFile(kelvo::testing::makeFolderChain(tree / ("branch-" + std::to_string(branch)), 48) / "f", 4);
    const int before = openDescriptors();
    int peak = 0;

    EXPECT_FALSE(removeTree(tree, {.sharing = everyStep([&] { peak = std::max(peak, openDescriptors()); })}));
    EXPECT_FALSE(present(tree));
    EXPECT_TRUE(fs::exists(sibling));
    EXPECT_GT(peak, 0);
    EXPECT_LE(peak - before, 36) << "descriptors should not grow with the depth of the tree";
}

TEST(TreeRemoval, AFolderMovedOutMidWalkIsNotFollowedBackUp) {
    TempDir root;
    const path tree = makeDirectory(root / "tree");
    const path outside = makeDirectory(root / "outside");
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
        if (moved || present(deepest / "file")) return;
        moved = ::rename((tree / "l0/l1").c_str(), (outside / "moved").c_str()) == 0;
    };

    EXPECT_EQ(removeTree(tree, {.sharing = everyStep(moveLevelOne)}).value(), ESTALE);
    ASSERT_TRUE(moved);
    EXPECT_EQ(listing(outside), before + "moved/\n");
    EXPECT_TRUE(fs::is_directory(tree / "l0"));
}

TEST(TreeRemoval, EntriesAddedWhileTheTreeGoesGoToo) {
    TempDir root;
    const path tree = root / "tree";
    const path deep = writeFile(tree / "a/b/c/file", 10);
    writeFile(tree / "other", 10);
    // The top folder has been read to its end by the time the walk is this deep.
    bool added = false;
    const auto addLateFile = [&] {
        if (added || present(deep)) return;
        writeFile(tree / "late", 10);
        added = true;
    };

    EXPECT_FALSE(removeTree(tree, {.sharing = everyStep(addLateFile)}));
    ASSERT_TRUE(added);
    EXPECT_FALSE(present(tree));
}

TEST(TreeRemoval, AFolderFarWiderThanOneListingGoesWithItsSubfolders) {
    // Hard links, in memory when possible: names are what counts here.
    TempDir root(TempDir::memory);
    const path wide = makeDirectory(root / "wide");
    const path sibling = writeFile(root / "sibling", 10);
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
        EXPECT_FALSE(present(wide));
    }
    EXPECT_TRUE(fs::exists(sibling));
    ASSERT_EQ(made, names) << "could not make the names: " << std::strerror(errno);
}

TEST(TreeRemoval, OnlyTheNamedItemGoesAndOnlyThroughAStandardPathFreeOfLinks) {
    TempDir root;
    const path file = writeFile(root / "dir/file", 100);
    const path inside = writeFile(root / "target/inside", 100);
    fs::create_directory_symlink(root / "target", root / "dir/link");
    const path real = writeFile(root / "real/sub/tree/file", 100).parent_path();
    fs::create_directory_symlink(root / "real", root / "via");
    const path plain = writeFile(root / "plain", 10);
    const path tree = real.parent_path();
    struct Case {
        path item;
        std::error_code error;
    };
    const Case cases[] = {
        {root / "via/sub/tree", std::make_error_code(std::errc::too_many_symbolic_link_levels)},
        {plain / "x", std::make_error_code(std::errc::not_a_directory)},
        {root / "dir/missing", std::make_error_code(std::errc::no_such_file_or_directory)},
        {tree / "tree/..", std::make_error_code(std::errc::invalid_argument)},
        {tree / "tree/../tree", std::make_error_code(std::errc::invalid_argument)},
        {tree / "./tree", std::make_error_code(std::errc::invalid_argument)},
        {"relative/path", std::make_error_code(std::errc::invalid_argument)},
        {"/", std::make_error_code(std::errc::invalid_argument)},
        {"", std::make_error_code(std::errc::invalid_argument)},
        // A link goes as a link, a file as a file; repeated and trailing separators are harmless.
        {root / "dir/link", {}},
        {file, {}},
        {path(root.path().string() + "//real/sub/tree/"), {}},
    };
    for (const auto& c : cases) EXPECT_EQ(removeTree(c.item), c.error) << c.item;
    EXPECT_FALSE(present(root / "dir/link") || present(file) || present(real));
    for (const path& kept : {inside, plain, root / "dir", tree, root / "via"}) EXPECT_TRUE(present(kept)) << kept;
}

// A file system mounted inside the tree is not part of it. Runs in a child with a mount
// namespace of its own, so the mount disappears with it whatever happens.
TEST(TreeRemoval, MountedFoldersInsideTheTreeAreNotEntered) {
    TempDir root;
    const path tree = root / "tree";
    writeFile(tree / "own/file", 100);
    const path mountPoint = makeDirectory(tree / "mounted");
    const path canaryInMount = mountPoint / "canary";

    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, "size=1m") != 0)
            ::_exit(77);
        writeFile(canaryInMount, 10);
        const auto error = removeTree(tree, {.addOwnerPermissions = true, .sharing = {}});
        // 0: the mount was left alone with its content and the rest went.
        const bool kept = fs::exists(canaryInMount) && !present(tree / "own") && error == std::errc::cross_device_link;
        ::_exit(kept ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "no private mount namespace can be made here (needs CAP_SYS_ADMIN)";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace kelvo::platform
