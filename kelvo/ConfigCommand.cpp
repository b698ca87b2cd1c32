// kelvo config show: the effective configuration and where it is kept.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/Config.h"
#include "kelvo/Environment.h"
#include "kelvo/L10n.h"

namespace kelvo::tool {

Command addConfigCommand(CLI::App& app) {
    auto* config = app.add_subcommand("config", "Show the configuration");
    config->require_subcommand(1);
    auto* show = config->add_subcommand("show", "Print the effective configuration and the file's path");
    return {show, [] {
                const auto home = Environment::liveHome();
                const auto path = Config::filePath(home);
                fmt::print("{}\n", L10n::t(Config::exists(home) ? "cli.config.file" : "cli.config.noFile", path.string()));
                fmt::print("{}\n", Config::load(home).encoded());
                return 0;
            }};
}

}  // namespace kelvo::tool
