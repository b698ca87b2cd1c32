#pragma once
// What every detector of either catalog whose targets all carry one family and one risk
// shares (fixed paths, versioned folders, tool commands, leftovers, unused applications,
// old runtimes): its identity, that family and risk, the programs that guard its data
// while they run (CleanTarget::guardedProcesses), and the one way a target is built from
// them.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/Cleaner.h"

namespace kelvo {

class CatalogCleaner : public Cleaner {
public:
    const std::string& id() const final { return id_; }
    const std::string& name() const final { return name_; }
    Family family() const final { return family_; }
    Level level() const { return level_; }
    Reversibility reversibility() const { return reversibility_; }
    RegenCost regenCost() const { return regenCost_; }
    const std::vector<std::string>& guardedProcesses() const { return guardedProcesses_; }

protected:
    CatalogCleaner(std::string id, std::string name, Family family, Level level, Reversibility reversibility,
                   RegenCost regenCost, std::vector<std::string> guardedProcesses = {});

    // A target of this detector's family and risk.
    CleanTarget target(std::string id, std::string name, CleanKind kind, std::int64_t sizeBytes,
                       std::string notes) const;
    // A target of measured paths; its notes say when the size is only a lower bound and
    // what hard links shared with other places leave unfreed.
    CleanTarget target(std::string id, std::string name, std::vector<std::filesystem::path> paths,
                       const Measurement& measured) const;

private:
    std::string id_;
    std::string name_;
    Family family_;
    Level level_;
    Reversibility reversibility_;
    RegenCost regenCost_;
    std::vector<std::string> guardedProcesses_;
};

}  // namespace kelvo
