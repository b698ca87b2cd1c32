#pragma once
// Both services of the application over an environment, with nothing of the machine's:
// no process runs, a command succeeds unless its line ends in " fail", no application was
// ever used, the simulator runtimes are the given ones, no application folder is searched,
// and "now" is a fixed instant. The tests of the model and of the desktop build on it.
#include "kelvo/AppModel.h"
#include "support/Instants.h"

namespace kelvo::testing {

inline AppServices stubServices(const Environment& env, std::function<std::vector<SimRuntime>()> runtimes = [] {
    return std::vector<SimRuntime>{};
}) {
    const auto probe = std::make_shared<StubProcessProbe>();
    const CommandRunner runner = [](const std::string& line, const ShellVariables&) { return line.ends_with(" fail") ? 1 : 0; };
    return {CleanService{env, probe, runner},
            PrepareService{.env = env, .probe = probe, .runCommand = runner, .now = utc(2025, 7, 1),
                           .metadata = std::make_shared<StubAppMetadata>(std::map<std::string, TimePoint>{}),
                           .simLister = std::move(runtimes), .appIndexDirs = std::vector<std::filesystem::path>{}}};
}

}  // namespace kelvo::testing
