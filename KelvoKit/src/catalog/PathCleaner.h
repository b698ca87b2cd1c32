#pragma once
// The simplest detector: a fixed list of files or folders under a base directory (a tool's
// cache, its logs, its downloads), reported as one target whose size is the space they
// occupy. Paths that do not exist (a dangling link counts as missing) are left out of the
// target; when none exists, or all of them together occupy nothing, there is no target. A
// path that is itself a link to something that exists stays in the target unmeasured, and
// such a target is offered even at 0 bytes: the scanner marks it as one the executor will
// refuse, so the user sees why it is not cleaned.
// A path holding a git work tree at its top, or lacking the tool's marks (PlaceMarks), is
// left out too: a folder of the user's is never offered for its name alone.
// Unreadable parts make the size a lower bound and the target carries the partial-size
// note. A scan whose stop was requested yields nothing, since its sizes are incomplete.
// Given unlessFound, a program, there is no target while that program is found (the check
// is CommandCleaner's, made on every scan): the tool's own command then takes the places' turn.
#include <filesystem>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"
#include "catalog/CommandCleaner.h"
#include "catalog/PlaceMarks.h"

namespace kelvo {

class PathCleaner final : public CatalogCleaner {
public:
    PathCleaner(std::string id, std::string name, Family family, std::filesystem::path home,
                std::vector<std::string> relativePaths, Level level, Reversibility reversibility, RegenCost regenCost,
                PlaceMarks::Marks marks = {}, std::vector<std::string> guardedProcesses = {},
                std::string unlessFound = {}, CommandCleaner::ToolCheck toolAvailable = {});

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    const std::filesystem::path& home() const { return home_; }
    // Relative to home, in the order the target lists them.
    const std::vector<std::string>& relativePaths() const { return relativePaths_; }
    // What every path must hold to be offered; none: any path.
    const PlaceMarks::Marks& marks() const { return marks_; }

private:
    std::filesystem::path home_;
    std::vector<std::string> relativePaths_;
    PlaceMarks::Marks marks_;
    std::string unlessFound_;
    CommandCleaner::ToolCheck toolAvailable_;
};

}  // namespace kelvo
