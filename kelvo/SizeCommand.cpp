// kelvo size PATH...: the allocated size of each path, as a scan would measure it.
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
                WorkerPool pool;
                const DirectorySizer sizer(pool);
                int status = 0;
                for (const auto& path : options.paths) {
                    if (!LocalFiles::standsAt(path)) {
                        fmt::print(stderr, "{}\n", L10n::t("cli.size.missing", path));
                        status = 1;
                        continue;
                    }
                    const auto measurement = sizer.measure(path);
                    fmt::print("{:>12}  {:>16}  {}{}\n", Format::bytes(measurement.bytes), measurement.bytes, path,
                               measurement.hadErrors ? "  " + L10n::t("cli.size.lowerBound") : "");
                }
                return status;
            }};
}

}  // namespace kelvo::tool
