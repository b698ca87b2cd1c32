// kelvo size PATH...: the allocated size of each path, as du counts it: a file with several
// names once across all the paths, in the first that names it.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/LocalFiles.h"
#include "kelvo/WorkerPool.h"

namespace kelvo::tool {

Command addSizeCommand(CLI::App& app, SizeCommandOptions& options) {
    auto* command = app.add_subcommand("size", "Print the allocated size of each path");
    command->add_option("paths", options.paths, "Files or folders to measure")->required();
    return {command, [&options] {
                int status = 0;
                std::vector<std::filesystem::path> present;
                for (const auto& path : options.paths) {
                    if (LocalFiles::standsAt(path)) {
                        present.emplace_back(path);
                        continue;
                    }
                    fmt::print(stderr, "{}\n", L10n::t("cli.size.missing", path));
                    status = 1;
                }
                WorkerPool pool;
                const auto measurements = DirectorySizer(pool).measureEach(present);
                for (std::size_t index = 0; index < present.size(); ++index) {
                    const auto& measurement = measurements[index];
                    fmt::print("{:>12}  {:>16}  {}{}\n", Format::bytes(measurement.bytes), measurement.bytes,
                               present[index].string(),
                               measurement.hadErrors ? "  " + L10n::t("cli.size.lowerBound") : "");
                }
                return status;
            }};
}

}  // namespace kelvo::tool
