// Reading what a command line can reach before it runs.
#include <gtest/gtest.h>

#include <algorithm>

#include "kelvo/L10n.h"
#include "kelvo/ShellCommand.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using std::filesystem::path;

const ShellVariables variables{{"HOME", "/h"}, {"TMPDIR", "/t"}};

// Each place as "path" or "path ~ pattern".
std::vector<std::string> placesOf(const ShellCommand& command) {
    std::vector<std::string> places;
    for (const auto& place : command.places)
        places.push_back(place.path.string() + (place.pattern.empty() ? "" : " ~ " + place.pattern));
    return places;
}

TEST(ShellCommand, ReadsThePlacesALineNamesWithTheRunsVariables) {
    struct Case {
        std::string line;
        std::vector<std::string> places;
    };
    const Case cases[] = {
        {"rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* ${TMPDIR}/haste-map-?",
         {"/t/metro-cache", "/t/metro-bundler-cache-* ~ metro-bundler-cache-*", "/t/haste-map-? ~ haste-map-?"}},
        {"docker system prune -f", {}},
        {"watchman watch-del-all; watchman shutdown-server;", {}},
        {"xcrun simctl runtime delete 'odd id'", {}},
        {"/bin/rm -r -- ~/x '/t/a*' \"/t/b?\"*", {"/h/x", "/t/a*", "/t/b?* ~ b\\?*"}},
        {"tool --cache \"$HOME/.cache/caf\xC3\xA9\"", {"/h/.cache/caf\xC3\xA9"}},
        {"", {}},
    };
    for (const auto& c : cases) {
        const auto command = ShellCommand::read(c.line, variables);
        EXPECT_FALSE(command.refusal) << c.line << ": " << command.refusal.value_or("");
        EXPECT_EQ(placesOf(command), c.places) << c.line;
    }
}

TEST(ShellCommand, RefusesWhatItCannotReadToTheEnd) {
    struct Case {
        std::string line, key, detail;
    };
    const Case cases[] = {
        {"rm -rf \"$TMPDIR\"/x", "exec.skip.command.variable", "TMPDIR"},  // not given: see below
        {"rm -rf $PATH/x", "exec.skip.command.variable", "PATH"},
        {"rm -rf build", "exec.skip.command.place", "build"},
        {"rm -rf *", "exec.skip.command.place", "*"},
        {"tool --into=/t/x", "exec.skip.command.place", "--into=/t/x"},
        {"rm -rf /t/*/cache", "exec.skip.command.place", "/t/*/cache"},
        {"rm -rf /t/.*", "exec.skip.command.place", "/t/.*"},
        {"rm -rf /t/x/../..", "exec.skip.command.place", "/t/x/../.."},
        {"echo x > /etc/passwd", "exec.skip.command.syntax", ">"},
        {"tool | rm -rf /t/x", "exec.skip.command.syntax", "|"},
        {"rm -rf $(pwd)", "exec.skip.command.syntax", "$("},
        {"rm -rf \"`pwd`\"", "exec.skip.command.syntax", "`"},
        {"rm -rf ${TMPDIR:-/}", "exec.skip.command.syntax", "${TMPDIR:"},
        {"rm -rf /t/x\\ y", "exec.skip.command.syntax", "\\"},
        {"rm -rf '/t/x", "exec.skip.command.syntax", "'"},
        {"rm -rf ~root/x", "exec.skip.command.syntax", "~"},
        {"cd /; rm -rf x", "exec.skip.command.syntax", "cd"},
        {"TMPDIR=/ tool", "exec.skip.command.syntax", "TMPDIR=/"},
        {"tool;; tool", "exec.skip.command.syntax", ";"},
    };
    for (const auto& c : cases) {
        ShellVariables given = variables;
        if (&c == &cases[0]) given.erase("TMPDIR");
        EXPECT_EQ(ShellCommand::read(c.line, given).refusal, L10n::t(c.key, c.detail)) << c.line;
    }
    // Unquoted, a value the shell would split or match as a pattern is no single place.
    EXPECT_EQ(ShellCommand::read("rm -rf $TMPDIR/x", {{"TMPDIR", "/t t"}}).refusal,
              L10n::t("exec.skip.command.variable", "TMPDIR"));
    EXPECT_FALSE(ShellCommand::read("rm -rf \"$TMPDIR\"/x", {{"TMPDIR", "/t t"}}).refusal);
}

TEST(ShellCommand, APatternStandsForTheVisibleEntriesItMatchesNow) {
    testing::TempDir folder;
    testing::makeDirectory(folder / "haste-map-1");
    testing::writeFile(folder / "haste-map-2");
    testing::makeDirectory(folder / ".haste-map-hidden");
    testing::makeDirectory(folder / "other");
    auto matches = ShellCommand::matches({folder / "haste-map-*", "haste-map-*"});
    std::sort(matches.begin(), matches.end());
    EXPECT_EQ(matches, (std::vector<path>{folder / "haste-map-1", folder / "haste-map-2"}));
    EXPECT_EQ(ShellCommand::matches({folder / "*", "*"}).size(), 3u);
    EXPECT_EQ(ShellCommand::matches({folder / "plain", ""}), std::vector<path>{folder / "plain"});
    EXPECT_TRUE(ShellCommand::matches({folder / "missing/*", "*"}).empty());
}

}  // namespace
}  // namespace kelvo
