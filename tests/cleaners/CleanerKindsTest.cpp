#include <gtest/gtest.h>
#include <sys/stat.h>

#include <sstream>

#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "kelvo/PathCleaner.h"
#include "support/TempDir.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using testing::allocatedBytes;
using testing::allocatedBytesBelow;
using testing::writeFile;

class PathCleanerScan : public ::testing::Test {
protected:
    PathCleaner cleaner(std::vector<std::string> relativePaths) const {
        return PathCleaner("tool-cache", "Tool cache", Family::devMisc, home.path(), std::move(relativePaths),
                           Level::moderate, Reversibility::regenerable, RegenCost::redownload);
    }

    testing::TempDir home;
};

TEST_F(PathCleanerScan, OneTargetOfTheExistingPathsInTheGivenOrderSummed) {
    writeFile(home / "z-first/data", 10000);
    writeFile(home / "a-second/deeper/data", 20000);
    const fs::path file = writeFile(home / "Logs/tool.log", 10000);
    const auto targets = cleaner({"z-first", "missing", "a-second", "Logs/tool.log"}).scan();
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].kind, CleanKind::paths({home / "z-first", home / "a-second", file}));
    EXPECT_EQ(targets[0].sizeBytes,
              allocatedBytesBelow(home / "z-first") + allocatedBytesBelow(home / "a-second") + allocatedBytes(file));
    EXPECT_EQ(targets[0].level, Level::moderate);
    EXPECT_EQ(targets[0].regenCost, RegenCost::redownload);
    EXPECT_EQ(targets[0].notes, "");
}

TEST_F(PathCleanerScan, NothingWhenEveryPathIsMissingEmptyDanglingOrTheScanIsStopped) {
    testing::makeDirectory(home / "empty");
    writeFile(home / "zero-length", 0);
    fs::create_symlink(home / "gone", home / "dangling");
    EXPECT_TRUE(cleaner({"empty", "zero-length", "dangling", "missing"}).scan().empty());
    writeFile(home / "cache/data", 8192);
    std::stop_source stop;
    stop.request_stop();
    const DirectorySizer sizer;
    EXPECT_TRUE(cleaner({"cache"}).scan(ScanContext{sizer, stop.get_token()}).empty());
}

TEST_F(PathCleanerScan, ALinkedPathStaysInTheTargetUnmeasuredAndInnerLinksAreNotFollowed) {
    const fs::path elsewhere = writeFile(home / "elsewhere/brew/bottle", 1 << 20).parent_path();
    fs::create_directory_symlink(elsewhere, home / "linked");
    const fs::path file = writeFile(home / "cache/original", 8192);
    fs::create_hard_link(file, home / "cache/second-name");  // one file, counted once
    fs::create_symlink(elsewhere / "bottle", home / "cache/to-outside");
    const auto both = cleaner({"linked", "cache"}).scan();
    ASSERT_EQ(both.size(), 1u);
    EXPECT_EQ(both[0].kind, CleanKind::paths({home / "linked", home / "cache"}));
    EXPECT_EQ(both[0].sizeBytes, allocatedBytes(file) + allocatedBytes(home / "cache/to-outside"));
    // Offered on its own too, at nothing, so that the scan can say why it is not cleaned.
    const auto alone = cleaner({"linked"}).scan();
    ASSERT_EQ(alone.size(), 1u);
    EXPECT_EQ(alone[0].sizeBytes, 0);
}

TEST_F(PathCleanerScan, AnUnreadableFolderGivesAPartialSizeNote) {
    const fs::path readable = writeFile(home / "cache/readable", 8192);
    writeFile(home / "cache/locked/secret", 1 << 20);
    ASSERT_EQ(::chmod((home / "cache/locked").c_str(), 0), 0);
    const std::int64_t readablePart = allocatedBytes(readable) + allocatedBytes(home / "cache/locked");

    const PathCleaner scanned = cleaner({"cache"});
    const auto run = testing::runAsUnprivileged([&] {
        const auto targets = scanned.scan();
        std::ostringstream out;
        out << targets.size();
        for (const auto& target : targets) out << '\n' << target.sizeBytes << '\n' << target.notes;
        return out.str();
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output.has_value()) << run.failure;
    EXPECT_EQ(*run.output, "1\n" + std::to_string(readablePart) + "\n" + CleanTarget::partialSizeNote());
    EXPECT_NE(CleanTarget::partialSizeNote(), "");
}

CommandCleaner makeCommand(const std::string& command, std::int64_t estimate, CommandCleaner::ToolCheck check) {
    return CommandCleaner("some-command", "Some command", Family::reactNative, command, Level::moderate,
                          Reversibility::regenerable, RegenCost::reindex, estimate, std::move(check));
}

TEST(CommandCleaner, TheToolIsTheFirstWordSplitAtSpacesOnly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"xcrun simctl delete unavailable", "xcrun"},
        {"watchman watch-del-all; watchman shutdown-server", "watchman"},
        {"  brew cleanup -s", "brew"},     // empty pieces are left out
        {"conda", "conda"},
        {"tool\tflag rest", "tool\tflag"},  // a tab stays inside the word
        {"", ""},
        {"   ", "   "},  // no piece at all: the whole command
    };
    for (const auto& [command, tool] : cases)
        EXPECT_EQ(makeCommand(command, 0, [](auto&) { return true; }).tool(), tool) << command;
}

TEST(CommandCleaner, OffersTheWholeLineWithItsEstimateOnlyWhileTheCheckFindsItsTool) {
    std::vector<std::string> asked;
    bool installed = false;
    const std::string line = "watchman watch-del-all; watchman shutdown-server";
    const auto cleaner = makeCommand(line, 0, [&](const std::string& tool) {
        asked.push_back(tool);
        return installed;
    });
    EXPECT_TRUE(cleaner.scan().empty());
    installed = true;  // asked again on every scan: nothing is remembered
    const auto targets = cleaner.scan();
    EXPECT_EQ(asked, (std::vector<std::string>{"watchman", "watchman"}));
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(targets[0].kind, CleanKind::command(line));
    EXPECT_EQ(targets[0].level, Level::moderate);
    EXPECT_EQ(targets[0].regenCost, RegenCost::reindex);
    // An unknown estimate is size zero with a note; a known one is the size.
    EXPECT_EQ(targets[0].sizeBytes, 0);
    EXPECT_EQ(targets[0].notes, L10n::t("cleaner.note.unknownSize"));
    EXPECT_NE(targets[0].notes, "cleaner.note.unknownSize") << "the catalog lacks the note's text";
    const auto known = makeCommand(line, 5000, [](auto&) { return true; }).scan();
    ASSERT_EQ(known.size(), 1u);
    EXPECT_EQ(known[0].sizeBytes, 5000);
    EXPECT_EQ(known[0].notes, "");
}

}  // namespace
}  // namespace kelvo
