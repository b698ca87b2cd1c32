// kelvo help [COMMAND...]: the same text as --help, for those who type the word.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Commands.h"
#include "kelvo/L10n.h"

namespace kelvo::tool {

Command addHelpCommand(CLI::App& app, HelpCommandOptions& options) {
    auto* command = app.add_subcommand("help", "Print the help of the tool or of a command");
    command->add_option("command", options.words, "The command, words as typed (prepare clean)");
    return {command, [&app, &options] {
                const CLI::App* level = &app;
                // The usage line names the command by the words that lead to it.
                std::string name = app.get_name();
                for (const auto& word : options.words) {
                    const auto visible = level->get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
                    const auto found = std::find_if(visible.begin(), visible.end(),
                                                    [&word](const CLI::App* sub) { return sub->get_name() == word; });
                    if (found == visible.end()) {
                        std::vector<std::string> known;
                        for (const auto* sub : visible) known.push_back(sub->get_name());
                        fmt::print(stderr, "{}\n", L10n::t("cli.command.unknown", word, fmt::format("{}", fmt::join(known, ", "))));
                        return usageErrorStatus;
                    }
                    level = *found;
                    name += " " + level->get_name();
                }
                // Not help(), which would describe the command being run: `help` itself.
                fmt::print("{}", level->get_formatter()->make_help(level, name, CLI::AppFormatMode::Normal));
                return 0;
            }};
}

}  // namespace kelvo::tool
