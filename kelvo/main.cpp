// The kelvo command-line tool: a thin front end that turns the library's results into text.
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>

#include "Commands.h"
#include "kelvo/KelvoKit.h"
#include "kelvo/L10n.h"

namespace {

// A word left over where a subcommand was required: the innermost command given, and the
// word it does not know ("bogus" in `kelvo bogus` or `kelvo config bogus`).
std::optional<std::string> unknownSubcommandMessage(const CLI::App& app) {
    // Options fall through to the parent (the global --catalog), so the word may have been
    // handed up: take the innermost level that kept one.
    const CLI::App* level = &app;
    std::vector<std::string> leftOver = app.remaining();
    while (!level->get_subcommands().empty()) {
        level = level->get_subcommands().front();
        if (auto kept = level->remaining(); !kept.empty()) leftOver = std::move(kept);
    }
    if (leftOver.empty() || leftOver.front().starts_with('-')) return std::nullopt;
    std::vector<std::string> known;
    for (const auto* command : level->get_subcommands({}))
        if (!command->get_group().empty()) known.push_back(command->get_name());
    return kelvo::L10n::t("cli.command.unknown", leftOver.front(), fmt::format("{}", fmt::join(known, ", ")));
}

}  // namespace

int main(int argc, char** argv) {
    // Load the text catalogs now, so a broken installation stops at once with its message.
    kelvo::L10n::bundle();

    // Named here, so the usage line says "kelvo" however the program was started.
    CLI::App app{"Finds and removes the disk space that developer tool chains waste.", "kelvo"};
    app.set_version_flag("--version", fmt::format("kelvo {}", kelvo::KelvoKit::version()));
    app.require_subcommand(1);
    kelvo::tool::Options options;
    kelvo::tool::addCatalogOption(app, options.global);
    std::vector<kelvo::tool::Command> commands{
        kelvo::tool::addScanCommand(app, options.scan, options.global),
        kelvo::tool::addCleanCommand(app, options.clean, options.global)};
    for (auto& command : kelvo::tool::addPrepareCommands(app, options.prepare, options.prepareClean, options.global))
        commands.push_back(std::move(command));
    commands.push_back(kelvo::tool::addSizeCommand(app, options.size));
    commands.push_back(kelvo::tool::addScheduleCommand(app, options.schedule));
    for (auto& command : kelvo::tool::addConfigCommands(app, options.configEdit, options.global))
        commands.push_back(std::move(command));
    commands.push_back(kelvo::tool::addHelpCommand(app, options.help));
    for (auto& command : kelvo::tool::addToolingCommands(app, options.tooling, options.global))
        commands.push_back(std::move(command));
    // Set last, so that the commands do not repeat it.
    app.footer(
        "Exit status: 0 when all went well, 1 when a target was skipped or failed, 2 on a usage error or a clean "
        "refused before it starts.\n"
        "Files: ~/.config/kelvo/config.json holds the project folders, the exclusions, the default level, the days "
        "a project's build folders are kept and the enabled families.\n"
        "Environment: LC_ALL, LC_MESSAGES and LANG choose the language of the texts; with the linux catalog, "
        "XDG_CACHE_HOME, XDG_DATA_HOME, XDG_CONFIG_HOME, XDG_STATE_HOME and each tool's own variable "
        "(PIP_CACHE_DIR, CARGO_HOME, ...) say where the tools keep their data.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // CLI11 reports a word it does not know as a missing subcommand; say what it is.
        if (dynamic_cast<const CLI::RequiredError*>(&error))
            if (const auto unknown = unknownSubcommandMessage(app)) {
                fmt::print(stderr, "{}\n", *unknown);
                return kelvo::tool::usageErrorStatus;
            }
        const int status = app.exit(error);
        return status == 0 ? 0 : kelvo::tool::usageErrorStatus;
    }
    kelvo::tool::warnAboutConfiguration();
    // The innermost command given is the one that runs (`prepare clean`, not `prepare`).
    for (const auto& command : commands)
        if (command.app->parsed()) return command.run();
    return 0;
}
