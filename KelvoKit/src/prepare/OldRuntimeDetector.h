#pragma once
// Offers the installed versions of the version managers (VersionManagers.h) that nothing
// marks in use, one target per version. A version is kept when it is the tool's default;
// when a pin file under the project folders names it, a partial or alias pin ("3.11", "20",
// "lts/*", "stable", "nightly") keeping every version it could resolve to; when a virtual
// environment under the project folders runs from it; when a process runs from it; or when
// it was used at or after the cut-off (now minus olderThanMonths months). Last use is the
// access time of the version's main program where the file system records access times,
// else the version folder's own modification time, never that of a file inside (tools
// rewrite files inside installed versions without running them).
//
// What cannot be read or understood makes a tool offer nothing, with a note saying why: a
// default, a pin or an alias of a form the tool's row does not know, a pin file or project
// folder that cannot be read (a pin may hide there), a versions folder that cannot be listed.
//
// Each target is removed by the tool's own command when the tool is found (its line first
// names the version's folder, so that the executor checks that folder as it checks a path
// target's), else by the folder's path; it is never preselected (aggressive), its size is the
// folder's as the sizer measures it, and its notes say why it is offered.
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"
#include "catalog/CommandCleaner.h"
#include "kelvo/Environment.h"
#include "kelvo/ProcessProbe.h"
#include "config/VersionManagers.h"

namespace kelvo {

class OldRuntimeDetector final : public CatalogCleaner {
public:
    // An empty toolAvailable means CommandCleaner::which.
    OldRuntimeDetector(Environment env, int olderThanMonths, std::chrono::system_clock::time_point now,
                       ProbeDependency probe, CommandCleaner::ToolCheck toolAvailable = {},
                       std::vector<VersionManager> managers = versionManagers());

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

private:
    Environment env_;
    int olderThanMonths_;
    std::chrono::system_clock::time_point now_;
    ProbeDependency probe_;
    CommandCleaner::ToolCheck toolAvailable_;
    std::vector<VersionManager> managers_;
};

}  // namespace kelvo
