#include "kelvo/Reason.h"

#include <array>
#include <utility>

#include "kelvo/L10n.h"

namespace kelvo {
namespace {

using enum Reason::Code;

constexpr std::array keys{
    std::pair{homeUnanchored, "exec.refuse.home"},
    std::pair{tmpDirUnanchored, "exec.refuse.tmpDir"},
    std::pair{processRunning, "exec.skip.processRunning"},
    std::pair{appRunning, "exec.skip.appRunning"},
    std::pair{protectedAppID, "exec.skip.protectedApp.id"},
    std::pair{protectedAppName, "exec.skip.protectedApp.name"},
    std::pair{protectedPath, "exec.skip.protectedPath"},
    std::pair{resolvedUnsafe, "exec.skip.resolvedUnsafe"},
    std::pair{symlinkFinal, "exec.skip.symlinkFinal"},
    std::pair{symlinkAncestor, "exec.skip.symlinkAncestor"},
    std::pair{otherOwner, "exec.skip.otherOwner"},
    std::pair{ownerUnknown, "exec.skip.ownerUnknown"},
    std::pair{noPermission, "exec.skip.noPermission"},
    std::pair{systemRemnant, "exec.skip.systemRemnant"},
    std::pair{trashItself, "exec.skip.trashItself"},
    std::pair{trashOtherVolume, "exec.skip.trashOtherVolume"},
    std::pair{trashFailed, "exec.skip.trashFailed"},
    std::pair{commandSyntax, "exec.skip.command.syntax"},
    std::pair{commandVariable, "exec.skip.command.variable"},
    std::pair{commandPlace, "exec.skip.command.place"},
    std::pair{toolNotFound, "exec.error.toolNotFound"},
    std::pair{exitStatus, "exec.error.exitCode"},
};

}  // namespace

std::string_view Reason::key(Code code) {
    for (const auto& [each, key] : keys)
        if (each == code) return key;
    return {};
}

std::string Reason::text() const {
    if (code == toolNotFound) return L10n::t(key(code));
    return L10n::t(key(code), subject);
}

}  // namespace kelvo
