#include "kelvo/SafetyGuard.h"

#include <algorithm>

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {

std::string SafetyGuard::normalForm(const std::filesystem::path& path) {
    if (path.empty()) return {};
    return Paths::standardized(platform::resolveSymlinks(path)).string();
}

bool SafetyGuard::anchorsRemoval(const std::filesystem::path& folder) {
    return folder.is_absolute() && normalForm(folder) != "/";
}

std::optional<Reason> SafetyGuard::refusalFor(const Environment& env) {
    if (!anchorsRemoval(env.home)) return Reason{Reason::Code::homeUnanchored, env.home.string()};
    if (!anchorsRemoval(env.tmpDir)) return Reason{Reason::Code::tmpDirUnanchored, env.tmpDir.string()};
    return std::nullopt;
}

SafetyGuard::Settled SafetyGuard::settled() const {
    Settled settled;
    settled.anchored_ = anchorsRemoval(home);
    settled.home_ = normalForm(home);
    const auto normalised = [](const std::vector<std::filesystem::path>& list) {
        std::vector<std::string> forms;
        for (const auto& entry : list)
            if (auto form = normalForm(entry); !form.empty()) forms.push_back(std::move(form));
        return forms;
    };
    settled.roots_ = normalised(allowedRoots);
    settled.protected_ = normalised(protectedPaths);
    settled.exclusions_ = normalised(extraExclusions);
    return settled;
}

std::optional<SafetyGuard::Refusal> SafetyGuard::Settled::refusal(const std::filesystem::path& path) const {
    const std::string candidate = normalForm(path);
    if (candidate.empty()) return Refusal::outsideAllowedRoots;
    if (!anchored_) return Refusal::home;

    bool insideRoot = false;
    for (const auto& root : roots_) {
        // A root is never deletable itself, but another root may still contain it.
        if (Paths::same(root, candidate)) continue;
        if (Paths::isInside(candidate, root)) {
            insideRoot = true;
            break;
        }
    }
    if (!insideRoot) return Refusal::outsideAllowedRoots;

    if (Paths::same(candidate, home_)) return Refusal::home;

    // Protected paths and exclusions refuse themselves, everything inside them and every
    // folder that holds them (removing ~/Library would take ~/Library/.../Archives along).
    const auto touches = [&](const std::vector<std::string>& list) {
        return std::any_of(list.begin(), list.end(), [&](const std::string& entry) {
            return Paths::same(candidate, entry) || Paths::isInside(candidate, entry) ||
                   Paths::isInside(entry, candidate);
        });
    };
    if (touches(protected_)) return Refusal::protectedPath;
    if (touches(exclusions_)) return Refusal::exclusion;
    return std::nullopt;
}

}  // namespace kelvo
