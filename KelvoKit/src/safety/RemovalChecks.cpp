#include "safety/RemovalChecks.h"

#include "vocabulary/Paths.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {

std::optional<Reason> RemovalChecks::linkReason(const std::filesystem::path& path) {
    const auto standard = Paths::standardized(path);
    if (platform::isSymbolicLink(standard).value_or(false))
        return Reason{Reason::Code::symlinkFinal, standard.string()};
    const auto parent = standard.parent_path();
    const auto resolved = Paths::standardized(platform::resolveSymlinks(parent));
    if (!Paths::same(resolved.string(), parent.string())) return Reason{Reason::Code::symlinkAncestor, resolved.string()};
    return std::nullopt;
}

std::optional<Reason> RemovalChecks::ownerReason(const std::filesystem::path& path) {
    std::error_code error;
    const auto owner = platform::ownerOf(path, error);
    if (!owner) {
        if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) return std::nullopt;
        return Reason{Reason::Code::ownerUnknown, path.string()};
    }
    if (*owner != platform::currentUserID()) return Reason{Reason::Code::otherOwner, path.string()};
    return std::nullopt;
}

}  // namespace kelvo
