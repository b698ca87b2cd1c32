#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"

namespace kelvo {
namespace {

CommandCleaner makeCommand(const std::string& command, std::int64_t estimate, CommandCleaner::ToolCheck check) {
    return CommandCleaner("some-command", "Some command", Family::reactNative, command, Level::moderate,
                          Reversibility::regenerable, RegenCost::reindex, estimate, std::move(check));
}

TEST(CommandCleanerTool, IsTheFirstWordSplitAtSpacesOnly) {
    const auto toolOf = [](const std::string& command) { return makeCommand(command, 0, [](auto&) { return true; }).tool(); };
    EXPECT_EQ(toolOf("xcrun simctl delete unavailable"), "xcrun");
    EXPECT_EQ(toolOf("watchman watch-del-all; watchman shutdown-server"), "watchman");
    EXPECT_EQ(toolOf("rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/haste-map-*"), "rm");
    EXPECT_EQ(toolOf("  brew cleanup -s"), "brew");  // empty pieces are left out
    EXPECT_EQ(toolOf("conda"), "conda");
    // Only the space character separates: a tab stays inside the word.
    EXPECT_EQ(toolOf("tool\tflag rest"), "tool\tflag");
    EXPECT_EQ(toolOf(""), "");
    EXPECT_EQ(toolOf("   "), "   ");  // no piece at all: the whole command
}

TEST(CommandCleanerScan, AsksTheCheckAboutTheFirstWordAndOffersNothingWhenMissing) {
    std::vector<std::string> asked;
    const auto cleaner = makeCommand("docker system prune -f", 0, [&](const std::string& tool) {
        asked.push_back(tool);
        return false;
    });
    EXPECT_TRUE(cleaner.scan().empty());
    EXPECT_EQ(asked, std::vector<std::string>{"docker"});
    // Asked again on every scan: nothing is remembered.
    EXPECT_TRUE(cleaner.scan().empty());
    EXPECT_EQ(asked.size(), 2u);
}

TEST(CommandCleanerScan, UnknownEstimateGivesSizeZeroWithTheUnknownSizeNote) {
    const auto targets = makeCommand("bun pm cache rm", 0, [](auto&) { return true; }).scan();
    ASSERT_EQ(targets.size(), 1u);
    const auto& target = targets[0];
    EXPECT_EQ(target.sizeBytes, 0);
    const std::string note = L10n::t("cleaner.note.unknownSize");
    EXPECT_NE(note, "cleaner.note.unknownSize") << "the catalog lacks the note's text";
    EXPECT_EQ(target.notes, note);
}

TEST(CommandCleanerScan, KnownEstimateGivesThatSizeAndNoNote) {
    const auto targets = makeCommand("bun pm cache rm", 5000, [](auto&) { return true; }).scan();
    ASSERT_EQ(targets.size(), 1u);
    const auto& target = targets[0];
    EXPECT_EQ(target.sizeBytes, 5000);
    EXPECT_EQ(target.notes, "");
    EXPECT_EQ(target.id, "some-command");
    EXPECT_EQ(target.name, "Some command");
    EXPECT_EQ(target.family, Family::reactNative);
    EXPECT_EQ(target.level, Level::moderate);
    EXPECT_EQ(target.reversibility, Reversibility::regenerable);
    EXPECT_EQ(target.regenCost, RegenCost::reindex);
    EXPECT_EQ(target.kind, CleanKind::command("bun pm cache rm"));
}

TEST(CommandCleanerScan, SeveralCommandsSeparatedBySemicolonAreOneTarget) {
    const std::string line = "watchman watch-del-all; watchman shutdown-server";
    const auto targets = makeCommand(line, 0, [](const std::string& tool) { return tool == "watchman"; }).scan();
    ASSERT_EQ(targets.size(), 1u);
    ASSERT_TRUE(targets[0].kind.isCommand());
    EXPECT_EQ(targets[0].kind.commandLine(), line);
}

TEST(CommandCleanerWhich, FindsInstalledToolsOnly) {
    EXPECT_TRUE(CommandCleaner::which("sh"));
    EXPECT_FALSE(CommandCleaner::which("kelvo-no-such-tool-7f3a"));
}

TEST(CommandCleanerWhich, IsTheCheckWhenNoneIsGiven) {
    const auto present = makeCommand("sh -c true", 0, nullptr);
    const auto missing = makeCommand("kelvo-no-such-tool-7f3a --clean", 0, nullptr);
    ASSERT_TRUE(static_cast<bool>(present.toolAvailable()));
    EXPECT_EQ(present.scan().size(), 1u);
    EXPECT_TRUE(missing.scan().empty());
}

}  // namespace
}  // namespace kelvo
