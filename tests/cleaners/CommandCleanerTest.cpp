#include <gtest/gtest.h>

#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "support/ScopedEnvironment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

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

TEST(CommandCleaner, WithoutACheckLooksForAnExecutableOnThePath) {
    testing::TempDir bin;
    testing::writeText(bin / "kelvo-tool", "#!/bin/sh\n");
    std::filesystem::permissions(bin / "kelvo-tool", std::filesystem::perms::owner_all);
    testing::writeText(bin / "kelvo-plain", "not executable");
    const testing::ScopedEnvironment path({{"PATH", bin.path().string()}});
    EXPECT_TRUE(CommandCleaner::which("kelvo-tool"));
    EXPECT_FALSE(CommandCleaner::which("kelvo-plain"));
    EXPECT_FALSE(CommandCleaner::which("sh"));
    EXPECT_EQ(makeCommand("kelvo-tool --clean", 0, nullptr).scan().size(), 1u);
    EXPECT_TRUE(makeCommand("kelvo-missing --clean", 0, nullptr).scan().empty());
}

}  // namespace
}  // namespace kelvo
