#include "kelvo/RemovalChecks.h"

#include "kelvo/L10n.h"
#include "kelvo/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {

std::optional<std::string> RemovalChecks::linkReason(const std::filesystem::path& path) {
    const auto standard = Paths::standardized(path);
    if (platform::isSymbolicLink(standard).value_or(false))
        return L10n::t("exec.skip.symlinkFinal", standard.string());
    const auto parent = standard.parent_path();
    const auto resolved = Paths::standardized(platform::resolveSymlinks(parent));
    if (!Paths::same(resolved.string(), parent.string())) return L10n::t("exec.skip.symlinkAncestor", resolved.string());
    return std::nullopt;
}

std::optional<std::string> RemovalChecks::ownerReason(const std::filesystem::path& path) {
    std::error_code error;
    const auto owner = platform::ownerOf(path, error);
    if (!owner) {
        if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) return std::nullopt;
        return L10n::t("exec.skip.ownerUnknown", path.string());
    }
    if (*owner != platform::currentUserID()) return L10n::t("exec.skip.otherOwner", path.string());
    return std::nullopt;
}

}  // namespace kelvo
