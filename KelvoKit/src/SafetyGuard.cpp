#include "kelvo/SafetyGuard.h"

#include "kelvo/L10n.h"
#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

std::string SafetyGuard::normalForm(const std::filesystem::path& path) {
    if (path.empty()) return {};
    return Paths::standardized(platform::resolveSymlinks(path)).string();
}

bool SafetyGuard::anchorsRemoval(const std::filesystem::path& folder) {
    return folder.is_absolute() && normalForm(folder) != "/";
}

std::optional<std::string> SafetyGuard::refusalFor(const Environment& env) {
    if (!anchorsRemoval(env.home)) return L10n::t("exec.refuse.home", env.home.string());
    if (!anchorsRemoval(env.tmpDir)) return L10n::t("exec.refuse.tmpDir", env.tmpDir.string());
    return std::nullopt;
}

bool SafetyGuard::isDeletable(const std::filesystem::path& path) const {
    const std::string candidate = normalForm(path);
    if (candidate.empty() || !anchorsRemoval(home)) return false;

    bool insideRoot = false;
    for (const auto& root : allowedRoots) {
        const std::string normalRoot = normalForm(root);
        // A root is never deletable itself, but another root may still contain it.
        if (normalRoot.empty() || Paths::same(normalRoot, candidate)) continue;
        if (Paths::isInside(candidate, normalRoot)) {
            insideRoot = true;
            break;
        }
    }
    if (!insideRoot) return false;

    if (Paths::same(candidate, normalForm(home))) return false;

    // Protected paths and exclusions refuse themselves, everything inside them and every
    // folder that holds them (removing ~/Library would take ~/Library/.../Archives along).
    for (const auto* list : {&protectedPaths, &extraExclusions}) {
        for (const auto& entry : *list) {
            const std::string normalEntry = normalForm(entry);
            if (normalEntry.empty()) continue;
            if (Paths::same(candidate, normalEntry) || Paths::isInside(candidate, normalEntry) ||
                Paths::isInside(normalEntry, candidate))
                return false;
        }
    }
    return true;
}

}  // namespace kelvo
