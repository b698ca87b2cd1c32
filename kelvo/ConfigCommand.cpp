// kelvo config: show the effective configuration and where it is kept, or change one value
// of it; and the warning every command gives when the configuration file cannot be used.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/Config.h"
#include "kelvo/ConfigEdit.h"
#include "kelvo/Environment.h"
#include "kelvo/L10n.h"
#include "kelvo/ProjectDiscovery.h"

namespace kelvo::tool {
namespace {

// What is wrong with the file, as the second half of a sentence that names it.
std::string reasonText(const ConfigProblem& problem) {
    const std::string key = "cli.config.problem." + std::string(rawValue(problem.kind));
    if (problem.kind != ConfigProblem::Kind::wrongType) return L10n::t(key, problem.key);
    return L10n::t(key, problem.key, L10n::t("cli.config.expected." + std::string(rawValue(problem.expected))));
}

// A change is applied to the file as it is: a file that cannot be used is not replaced by
// the defaults plus the change, which would lose what the user wrote there.
int runEdit(const ConfigEdit& edit, const GlobalOptions& global) {
    const auto home = Environment::liveHome();
    const auto loaded = Config::load(home);
    if (loaded.problem) {
        fmt::print(stderr, "{}\n", L10n::t("cli.config.keptUnusable", Config::filePath(home).string()));
        return 1;
    }
    const auto outcome = edit.applyTo(loaded, CleanerRegistry::familiesWithDetectors(global.liveEnvironment()));
    if (outcome.refusal) {
        fmt::print(stderr, "{}\n", outcome.refusal->text());
        return usageErrorStatus;
    }
    if (!outcome.changed && Config::exists(home)) {
        fmt::print("{}\n", L10n::t("cli.config.unchanged", Config::filePath(home).string()));
        return 0;
    }
    if (const auto error = outcome.config.save(home)) {
        fmt::print(stderr, "{}\n", Config::saveFailureText(home, error));
        return 1;
    }
    fmt::print("{}\n", L10n::t("cli.config.saved", Config::filePath(home).string()));
    return 0;
}

}  // namespace

void warnAboutConfiguration() {
    if (const auto problem = Config::load(Environment::liveHome()).problem)
        fmt::print(stderr, "{}\n", L10n::t("cli.config.unusable", problem->file.string(), reasonText(*problem)));
}

std::vector<Command> addConfigCommands(CLI::App& app, ConfigEdit& edit, const GlobalOptions& global) {
    auto* config = app.add_subcommand("config", "Show or change the configuration");
    config->require_subcommand(1);
    std::vector<Command> commands;
    const auto pathCommand = [&](const char* name, ConfigEdit::Action action, const char* description) {
        auto* command = config->add_subcommand(name, description);
        command->add_option("PATH", edit.value, "A folder: ~/..., an absolute path, or one inside the home folder")
            ->required();
        commands.push_back({command, [&edit, &global, action] {
                                edit.action = action;
                                return runEdit(edit, global);
                            }});
    };
    pathCommand("add-root", ConfigEdit::Action::addRoot, "Add a folder in which projects are searched");
    pathCommand("remove-root", ConfigEdit::Action::removeRoot, "Stop searching projects in a folder");
    pathCommand("exclude", ConfigEdit::Action::exclude, "Never touch a path, nor anything inside it");
    pathCommand("include", ConfigEdit::Action::include, "Remove a path from the exclusions");
    auto* set = config->add_subcommand("set", "Set one value: keepRecentDays (0-60), defaultLevel (safe, moderate, "
                                              "aggressive), enabledFamilies (all, none or names), "
                                              "checkMinimumVersion (true or false) or moveToTrash (true, false "
                                              "or default)");
    set->add_option("KEY", edit.key,
                    "keepRecentDays, defaultLevel, enabledFamilies, checkMinimumVersion or moveToTrash")
        ->required();
    set->add_option("VALUE", edit.value, "The value, as text")->required();
    commands.push_back({set, [&edit, &global] {
                            edit.action = ConfigEdit::Action::set;
                            return runEdit(edit, global);
                        }});
    auto* show = config->add_subcommand("show", "Print the effective configuration and the file's path");
    commands.push_back({show, [&global] {
                const auto home = Environment::liveHome();
                const auto path = Config::filePath(home);
                const auto loaded = Config::load(home);
                if (loaded.problem)
                    fmt::print("{}\n", L10n::t("cli.config.unusableFile", path.string(), reasonText(*loaded.problem)));
                else
                    fmt::print("{}\n", L10n::t(Config::exists(home) ? "cli.config.file" : "cli.config.noFile", path.string()));
                fmt::print("{}\n", loaded.encoded());
                // The folders a scan would walk besides the configured ones, said to be found.
                const auto env = ProjectDiscovery::completed(global.liveEnvironment());
                if (!env.foundProjectRoots) return 0;
                if (env.foundProjectRoots->empty()) {
                    fmt::print("{}\n", L10n::t("cli.config.foundNone"));
                    return 0;
                }
                fmt::print("{}\n", L10n::t("cli.config.found"));
                for (const auto& folder : *env.foundProjectRoots)
                    fmt::print("  {}  {}\n", folder.string(), L10n::t("cli.config.foundMark"));
                return 0;
            }});
    return commands;
}

}  // namespace kelvo::tool
