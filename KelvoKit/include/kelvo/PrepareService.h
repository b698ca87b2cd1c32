#pragma once
// The prepare domain's facade: scans with the profile's prepare detectors (leftovers of
// removed applications, unused applications, old simulator runtimes) through the scanner,
// and carries out a clean of chosen targets through an executor behind a guard whose
// allowed roots are the home, "/Applications" and, when a Flutter SDK is known, its bin
// folder; unlike the clean domain the temporary directory is not among them. Immutable:
// `now` is fixed when the service is built, so a new cut-off needs a new service. Whatever
// is left out is the live one: the running user's environment, the live probe, shell,
// metadata and runtime lister, the time of building.
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "kelvo/AppMetadata.h"
#include "kelvo/CleanTarget.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "kelvo/ProcessProbe.h"
#include "kelvo/SafetyGuard.h"
#include "kelvo/Scanner.h"
#include "kelvo/SimRuntime.h"

namespace kelvo {

struct PrepareService {
    Environment env = Environment::live();
    ProbeDependency probe{};
    CommandRunner runCommand{};
    int olderThanMonths = 6;
    std::chrono::system_clock::time_point now = std::chrono::system_clock::now();
    MetadataDependency metadata{};
    RuntimeLister simLister{};
    // Where installed applications are looked for; nothing means the standard folders.
    std::optional<std::vector<std::filesystem::path>> appIndexDirs{};
    // Where the system's Flatpak and Snap installations are looked for (Linux profile).
    std::filesystem::path systemRoot = "/";

    // The profile's detectors, built afresh (the installed applications are listed each
    // time, the project folders found when they are to be found: ProjectDiscovery).
    CleanerList preparers() const;
    // Unsorted, unselected targets, none that guard() refuses, with the scan's notes;
    // nothing when the scan was stopped.
    [[nodiscard]] std::optional<ScanResult> scan(const ScanOptions& options = {}) const;
    SafetyGuard guard() const;
    // cleanThrough this service (execution/DomainService.h); with toTrash, path targets go into
    // the desktop trash of the environment's data home.
    [[nodiscard]] ExecutionReport clean(const std::vector<CleanTarget>& targets, bool dryRun, bool force,
                                        bool toTrash = false) const;
};

}  // namespace kelvo
