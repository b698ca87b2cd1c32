#include "catalog/CatalogCleaner.h"

namespace kelvo {

CatalogCleaner::CatalogCleaner(std::string id, std::string name, Family family, Level level,
                               Reversibility reversibility, RegenCost regenCost,
                               std::vector<std::string> guardedProcesses)
    : id_(std::move(id)),
      name_(std::move(name)),
      family_(family),
      level_(level),
      reversibility_(reversibility),
      regenCost_(regenCost),
      guardedProcesses_(std::move(guardedProcesses)) {}

CleanTarget CatalogCleaner::target(std::string id, std::string name, CleanKind kind, std::int64_t sizeBytes,
                                   std::string notes) const {
    return {
        .id = std::move(id),
        .name = std::move(name),
        .family = family_,
        .kind = std::move(kind),
        .sizeBytes = sizeBytes,
        .reversibility = reversibility_,
        .regenCost = regenCost_,
        .level = level_,
        .notes = std::move(notes),
        .blockedByLink = false,
        .guardedProcesses = guardedProcesses_,
    };
}

CleanTarget CatalogCleaner::target(std::string id, std::string name, std::vector<std::filesystem::path> paths,
                                   const Measurement& measured) const {
    return target(std::move(id), std::move(name), CleanKind::paths(std::move(paths)), measured.bytes, measured.notes());
}

}  // namespace kelvo
