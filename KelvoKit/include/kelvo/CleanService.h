#pragma once
// The clean domain's facade: scans the catalog's enabled cleaners, tells which families
// have anything to clean, and carries out a clean of chosen targets through an executor
// behind a guard whose allowed roots are the home, the temporary directory and, when a
// Flutter SDK is known, its bin folder. Immutable: new settings make a new service.
// Whatever is left out is the live one: the running user's environment, probe and shell.
// Each scan first finds the project folders when the environment's are to be found and
// nobody looked yet (ProjectDiscovery::completed).
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/Environment.h"
#include "kelvo/ExecutionReport.h"
#include "kelvo/Executor.h"
#include "kelvo/ProcessProbe.h"
#include "kelvo/SafetyGuard.h"
#include "kelvo/Scanner.h"

namespace kelvo {

struct CleanService {
    Environment env = Environment::live();
    ProbeDependency probe{};
    CommandRunner runCommand{};

    // The enabled cleaners of the catalog (all when no set is configured, none for an empty set).
    CleanerList enabledCleaners() const;
    // Unsorted targets, none that guard() refuses, and the notes: the catalog's (what it
    // left out and why), then the scan's. Nothing when the scan was stopped.
    [[nodiscard]] std::optional<ScanResult> scan(const ScanOptions& options = {}) const;
    // The families that have targets guard() allows in a scan of the whole catalog,
    // enabled or not.
    [[nodiscard]] std::optional<std::set<Family>> detectFamilies(const ScanOptions& options = {}) const;
    SafetyGuard guard() const;
    // The same service with its scan narrowed to the families (an empty set changes
    // nothing). A clean that names ids is not narrowed: an id may name a target of any family.
    CleanService narrowedTo(const std::set<Family>& families, const std::vector<std::string>& ids = {}) const;
    // cleanThrough this service (execution/DomainService.h); with toTrash, path targets go into
    // the desktop trash of the environment's data home.
    [[nodiscard]] ExecutionReport clean(const std::vector<CleanTarget>& targets, bool dryRun, bool force,
                                        bool toTrash = false) const;
};

}  // namespace kelvo
