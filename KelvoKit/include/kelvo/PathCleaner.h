#pragma once
// A fixed set of files or folders under one base directory (a tool's cache, logs,
// downloads), offered as a single target whose size is the space they occupy. Paths that
// do not exist are left out; when nothing exists or everything measures 0 bytes the scan
// yields no target. The cleaner is immutable and holds no state between scans.
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/Cleaner.h"
#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"

namespace kelvo {

class PathCleaner final : public Cleaner {
public:
    PathCleaner(std::string id, std::string name, Family family, std::filesystem::path home,
                std::vector<std::string> relativePaths, Level level, Reversibility reversibility, RegenCost regenCost);

    const std::string& id() const override { return id_; }
    const std::string& name() const override { return name_; }
    Family family() const override { return family_; }
    // Zero or one target; its paths keep the order of relativePaths.
    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    const std::filesystem::path& home() const { return home_; }
    const std::vector<std::string>& relativePaths() const { return relativePaths_; }
    Level level() const { return level_; }
    Reversibility reversibility() const { return reversibility_; }
    RegenCost regenCost() const { return regenCost_; }

private:
    std::string id_;
    std::string name_;
    Family family_;
    std::filesystem::path home_;
    std::vector<std::string> relativePaths_;
    Level level_;
    Reversibility reversibility_;
    RegenCost regenCost_;
};

}  // namespace kelvo
