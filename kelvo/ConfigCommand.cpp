// kelvo config show: the effective configuration and where it is kept; and the warning every
// command gives when the configuration file cannot be used.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/Config.h"
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

}  // namespace

void warnAboutConfiguration() {
    if (const auto problem = Config::load(Environment::liveHome()).problem)
        fmt::print(stderr, "{}\n", L10n::t("cli.config.unusable", problem->file.string(), reasonText(*problem)));
}

Command addConfigCommand(CLI::App& app, const GlobalOptions& global) {
    auto* config = app.add_subcommand("config", "Show the configuration");
    config->require_subcommand(1);
    auto* show = config->add_subcommand("show", "Print the effective configuration and the file's path");
    return {show, [&global] {
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
            }};
}

}  // namespace kelvo::tool
