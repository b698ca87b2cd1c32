#include "kelvo/PrepareService.h"

#include "execution/DomainService.h"
#include "kelvo/PrepareRegistry.h"
#include "kelvo/ProjectDiscovery.h"

namespace kelvo {

CleanerList PrepareService::preparers() const {
    return PrepareRegistry::makePreparers(ProjectDiscovery::completed(env), olderThanMonths, now, metadata, simLister, appIndexDirs, probe,
                                          systemRoot);
}

std::optional<ScanResult> PrepareService::scan(const ScanOptions& options) const {
    return Scanner(preparers(), guard()).scan(options);
}

SafetyGuard PrepareService::guard() const {
    // Applications are bundles in /Applications on macOS only; on Linux what the domain
    // offers lies in the home.
    std::vector<std::filesystem::path> roots{env.home};
    if (env.catalog == CatalogProfile::macos) roots.emplace_back("/Applications");
    if (env.flutterBinCache) roots.push_back(env.flutterBinCache->parent_path());
    return SafetyGuard{env.home, std::move(roots), PrepareRegistry::prepareProtectedPaths(env),
                       env.resolvedExtraExclusions()};
}

ExecutionReport PrepareService::clean(const std::vector<CleanTarget>& targets, bool dryRun, bool force, bool toTrash) const {
    return cleanThrough(*this, targets, dryRun, force, toTrash);
}

static_assert(DomainService<PrepareService>);

}  // namespace kelvo
