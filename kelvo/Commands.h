#pragma once
// The subcommands of the kelvo tool. Each adds itself to the application with its options
// in a plain struct, and hands back how to run it; running returns the process's exit
// status: 0 success, 1 a failure of the work itself, 2 a usage error, or a clean the
// library refuses before it starts.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "CleanFlow.h"
#include "kelvo/CatalogProfile.h"
#include "kelvo/ConfigEdit.h"
#include "kelvo/Environment.h"

namespace kelvo::tool {

// --catalog macos|linux, for every subcommand.
struct GlobalOptions {
    std::string catalog;  // empty: the running system's profile

    CatalogProfile profile() const;
    Environment liveEnvironment() const;
};

// The words --catalog accepts, in the order they are offered.
std::vector<std::string> catalogNames();

struct ScanCommandOptions {
    std::vector<std::string> familyNames;
    bool json = false;
    bool paths = false;
    bool quiet = false;
    std::string notifyAbove;  // a size as Format::parseBytes reads it; empty: no notification
};

struct ScheduleOptions {
    std::string frequency = "status";  // a ScanSchedule frequency name, or "status"
    std::string notifyAbove;           // empty: the notification's default threshold
};

struct PrepareCommandOptions {
    bool json = false;
    bool quiet = false;
};

struct HelpCommandOptions {
    std::vector<std::string> words;  // the command asked about: "prepare clean" as two words
};

// The hidden commands the shell completions and the build use: `__complete KIND` lists the
// words a value may be, `__generate FORMAT` writes the manual page or a completion script.
struct ToolingOptions {
    std::string complete;
    std::string generate;
};

struct SizeCommandOptions {
    std::vector<std::string> paths;
};

// Every option of one invocation; the commands keep references into it.
struct Options {
    GlobalOptions global;
    ScanCommandOptions scan;
    CleanRequest clean;
    PrepareCommandOptions prepare;
    CleanRequest prepareClean;
    SizeCommandOptions size;
    HelpCommandOptions help;
    ConfigEdit configEdit;
    ScheduleOptions schedule;
    ToolingOptions tooling;
};

// A subcommand, and what it does when it is the one given.
struct Command {
    const CLI::App* app = nullptr;
    std::function<int()> run;
};

void addCatalogOption(CLI::App& app, GlobalOptions& options);
Command addScanCommand(CLI::App& app, ScanCommandOptions& options, const GlobalOptions& global);
Command addCleanCommand(CLI::App& app, CleanRequest& request, const GlobalOptions& global);
// `prepare` and its `prepare clean`, the inner one first.
std::vector<Command> addPrepareCommands(CLI::App& app, PrepareCommandOptions& options, CleanRequest& request,
                                        const GlobalOptions& global);
Command addSizeCommand(CLI::App& app, SizeCommandOptions& options);
// `schedule [daily|weekly|off|status]`: the background scan's systemd user timer.
Command addScheduleCommand(CLI::App& app, ScheduleOptions& options);
// The threshold of --notify-above; nothing, after saying why on standard error, when the
// text is no size.
std::optional<std::int64_t> parseNotifyAbove(const std::string& text);
// `config show` (also the project folders found, when the configuration names none),
// `config add-root`, `remove-root`, `exclude`, `include` and `set`.
std::vector<Command> addConfigCommands(CLI::App& app, ConfigEdit& edit, const GlobalOptions& global);
// When the running user's configuration file is there but cannot be used, says so on
// standard error: which file, what is wrong, and that the defaults are used instead.
void warnAboutConfiguration();
// `help [COMMAND...]`: the help of the tool or of the command named, as --help prints it.
Command addHelpCommand(CLI::App& app, HelpCommandOptions& options);
// `__complete` and `__generate`, hidden from the help; the last ones added, so that the
// descriptions they render are complete.
std::vector<Command> addToolingCommands(CLI::App& app, ToolingOptions& options, const GlobalOptions& global);

}  // namespace kelvo::tool
