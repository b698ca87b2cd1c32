#include "kelvo/CleanService.h"

#include "kelvo/CleanerRegistry.h"
#include "execution/DomainService.h"
#include "kelvo/ProjectDiscovery.h"

namespace kelvo {

namespace {

void keepEnabled(CleanerList& cleaners, const Environment& env) {
    if (!env.enabledFamilies) return;
    std::erase_if(cleaners, [&](const auto& cleaner) { return !env.enabledFamilies->contains(cleaner->family()); });
}

}  // namespace

CleanerList CleanService::enabledCleaners() const {
    CleanerList cleaners = CleanerRegistry::makeCleaners(ProjectDiscovery::completed(env));
    keepEnabled(cleaners, env);
    return cleaners;
}

std::optional<ScanResult> CleanService::scan(const ScanOptions& options) const {
    auto catalog = CleanerRegistry::build(ProjectDiscovery::completed(env, options.stop));
    keepEnabled(catalog.cleaners, env);
    auto result = Scanner(std::move(catalog.cleaners), guard()).scan(options);
    if (result) result->notes.insert(result->notes.begin(), catalog.notes.begin(), catalog.notes.end());
    return result;
}

CleanService CleanService::narrowedTo(const std::set<Family>& families, const std::vector<std::string>& ids) const {
    CleanService narrowed = *this;
    if (!families.empty() && ids.empty()) narrowed.env.enabledFamilies = families;
    return narrowed;
}

std::optional<std::set<Family>> CleanService::detectFamilies(const ScanOptions& options) const {
    const auto scanned =
        Scanner(CleanerRegistry::makeCleaners(ProjectDiscovery::completed(env, options.stop)), guard()).scan(options);
    if (!scanned) return std::nullopt;
    std::set<Family> families;
    for (const auto& target : scanned->targets) families.insert(target.family);
    return families;
}

SafetyGuard CleanService::guard() const {
    return SafetyGuard{env.home, CleanerRegistry::allowedRoots(env), CleanerRegistry::protectedPaths(env),
                       env.resolvedExtraExclusions()};
}

ExecutionReport CleanService::clean(const std::vector<CleanTarget>& targets, bool dryRun, bool force, bool toTrash) const {
    return cleanThrough(*this, targets, dryRun, force, toTrash);
}

static_assert(DomainService<CleanService>);

}  // namespace kelvo
