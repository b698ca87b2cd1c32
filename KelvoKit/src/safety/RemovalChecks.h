#pragma once
// What stands at a path, judged before it is removed. The executor refuses a path that is
// a symbolic link or is reached through one, and a path that belongs to another user than
// the one running Kelvo or whose owner cannot be read. The scan asks the same questions,
// so that what it offers and preselects is what a clean removes. Each check gives the
// reason for refusing, or nothing when the path passes; a path where nothing
// stands passes both (it is judged by its written form, and there is nothing to remove).
#include <filesystem>
#include <optional>

#include "kelvo/Reason.h"

namespace kelvo::RemovalChecks {

// The path, standardised, is itself a symbolic link, or its parent resolves elsewhere.
[[nodiscard]] std::optional<Reason> linkReason(const std::filesystem::path& path);
// The item itself (a link as a link) is not owned by the effective user, or its owner
// cannot be read for another reason than that nothing is there.
[[nodiscard]] std::optional<Reason> ownerReason(const std::filesystem::path& path);

}  // namespace kelvo::RemovalChecks
