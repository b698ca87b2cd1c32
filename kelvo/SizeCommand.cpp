// kelvo size PATH...: the allocated size of each path, as a scan would measure it.
#include <fmt/format.h>

#include "Commands.h"
#include "kelvo/DirectorySizer.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo::tool {

void registerSizeCommand(CLI::App& app) {
    auto* command = app.add_subcommand("size", "Print the allocated size of each path");
    static std::vector<std::string> paths;
    command->add_option("paths", paths, "Files or folders to measure")->required();
    command->callback([] {
        WorkerPool pool;
        const DirectorySizer sizer(pool);
        int status = 0;
        for (const auto& path : paths) {
            if (!platform::exists(path) && !platform::isSymbolicLink(path).value_or(false)) {
                fmt::print(stderr, "{}\n", L10n::t("cli.size.missing", path));
                status = 1;
                continue;
            }
            const auto measurement = sizer.measure(path);
            fmt::print("{:>12}  {:>16}  {}{}\n", Format::bytes(measurement.bytes), measurement.bytes, path,
                       measurement.hadErrors ? "  " + L10n::t("cli.size.lowerBound") : "");
        }
        setExitStatus(status);
    });
}

}  // namespace kelvo::tool
