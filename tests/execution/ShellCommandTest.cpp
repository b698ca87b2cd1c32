// Reading what a command line can reach before it runs.
#include <gtest/gtest.h>

#include "safety/ShellCommand.h"

namespace kelvo {
namespace {

const ShellVariables variables{{"HOME", "/h"}, {"TMPDIR", "/t"}};

TEST(ShellCommand, ReadsThePlacesALineNamesWithTheRunsVariables) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* ${TMPDIR}/haste-map-?",
         {"/t/metro-cache", "/t/metro-bundler-cache-* ~ metro-bundler-cache-*", "/t/haste-map-? ~ haste-map-?"}},
        {"docker system prune -f", {}}, {"watchman watch-del-all; watchman shutdown-server;", {}},
        {"xcrun simctl runtime delete 'odd id'", {}}, {"", {}},
        {"/bin/rm -r -- ~/x '/t/a*' \"/t/b?\"*", {"/h/x", "/t/a*", "/t/b?* ~ b\\?*"}},
        {"tool --cache \"$HOME/.cache/caf\xC3\xA9\"", {"/h/.cache/caf\xC3\xA9"}},
    };
    for (const auto& [line, places] : cases) {
        const auto command = ShellCommand::read(line, variables);
        EXPECT_FALSE(command.refusal) << line << ": " << command.refusal.value_or(Reason{}).subject;
        std::vector<std::string> read;  // each place as "path" or "path ~ pattern"
        for (const auto& place : command.places)
            read.push_back(place.path.string() + (place.pattern.empty() ? "" : " ~ " + place.pattern));
        EXPECT_EQ(read, places) << line;
    }
}

TEST(ShellCommand, RefusesWhatItCannotReadToTheEnd) {
    using enum Reason::Code;
    const struct { std::string line; Reason::Code code; std::string subject; } cases[] = {
        {"rm -rf \"$TMPDIR\"/x", commandVariable, "TMPDIR"},  // not given: see below
        {"rm -rf $PATH/x", commandVariable, "PATH"}, {"rm -rf build", commandPlace, "build"}, {"rm -rf *", commandPlace, "*"},
        {"tool --into=/t/x", commandPlace, "--into=/t/x"}, {"rm -rf /t/*/cache", commandPlace, "/t/*/cache"},
        {"rm -rf /t/.*", commandPlace, "/t/.*"}, {"rm -rf /t/x/../..", commandPlace, "/t/x/../.."},
        {"echo x > /etc/passwd", commandSyntax, ">"}, {"tool | rm -rf /t/x", commandSyntax, "|"},
        {"rm -rf $(pwd)", commandSyntax, "$("}, {"rm -rf \"`pwd`\"", commandSyntax, "`"},
        {"rm -rf ${TMPDIR:-/}", commandSyntax, "${TMPDIR:"}, {"rm -rf /t/x\\ y", commandSyntax, "\\"},
        {"rm -rf '/t/x", commandSyntax, "'"}, {"rm -rf ~root/x", commandSyntax, "~"}, {"cd /; rm -rf x", commandSyntax, "cd"},
        {"TMPDIR=/ tool", commandSyntax, "TMPDIR=/"}, {"tool;; tool", commandSyntax, ";"},
        {"rm -rf $1/x", commandSyntax, "$1"},
    };
    for (const auto& c : cases) {
        ShellVariables given = variables;
        if (&c == &cases[0]) given.erase("TMPDIR");
        EXPECT_EQ(ShellCommand::read(c.line, given).refusal, (Reason{c.code, c.subject})) << c.line;
    }
    // Unquoted, a value the shell would split or match as a pattern is no single place.
    EXPECT_EQ(ShellCommand::read("rm -rf $TMPDIR/x", {{"TMPDIR", "/t t"}}).refusal,
              (Reason{commandVariable, "TMPDIR"}));
    EXPECT_FALSE(ShellCommand::read("rm -rf \"$TMPDIR\"/x", {{"TMPDIR", "/t t"}}).refusal);
}

}  // namespace
}  // namespace kelvo
