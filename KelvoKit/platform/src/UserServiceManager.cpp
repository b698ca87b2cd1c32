#include "kelvo/platform/UserServiceManager.h"

#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo::platform {

bool LiveUserServiceManager::running() const {
    const auto runtime = environmentVariable("XDG_RUNTIME_DIR");
    if (!runtime || runtime->front() != '/') return false;
    return isPresent(std::filesystem::path(*runtime) / "systemd/private").value_or(false);
}

std::optional<int> LiveUserServiceManager::systemctl(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words{"--user"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const auto outcome = runProgram("/usr/bin/systemctl", words, /*captureOutput=*/false);
    if (!outcome) return std::nullopt;
    // posix_spawn reports a missing program from the child, as exit status 127.
    if (outcome->exitStatus == 127 && !exists("/usr/bin/systemctl")) return std::nullopt;
    return outcome->exitStatus;
}

}  // namespace kelvo::platform
