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
    std::vector<std::filesystem::path> roots{env.home, "/Applications"};
    if (env.flutterBinCache) roots.push_back(env.flutterBinCache->parent_path());
    return SafetyGuard{env.home, std::move(roots), PrepareRegistry::prepareProtectedPaths(env),
                       env.resolvedExtraExclusions()};
}

ExecutionReport PrepareService::clean(const std::vector<CleanTarget>& targets, bool dryRun, bool force, bool toTrash) const {
    return cleanThrough(*this, targets, dryRun, force, toTrash);
}

static_assert(DomainService<PrepareService>);

}  // namespace kelvo
