#include "kelvo/platform/UserSession.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace kelvo::platform {
namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

}  // namespace

std::optional<std::filesystem::path> homeDirectory() {
    if (auto home = variable("HOME")) return *home;
    std::vector<char> buffer(16384);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return std::nullopt;
}

std::optional<std::filesystem::path> stateHome() {
    if (auto state = variable("XDG_STATE_HOME"); state && state->front() == '/') return *state;
    if (auto home = homeDirectory()) return *home / ".local/state";
    return std::nullopt;
}

unsigned currentUserID() { return static_cast<unsigned>(::geteuid()); }

std::filesystem::path temporaryDirectory() {
    if (auto directory = variable("TMPDIR")) return *directory;
    return "/tmp";
}

std::optional<std::string> preferredLanguage() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        auto value = variable(name);
        if (!value) continue;
        const auto end = value->find_first_of("_.@-");
        std::string language = value->substr(0, end);
        if (language == "C" || language == "POSIX" || language.empty()) return std::nullopt;
        return language;
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> executableDirectory() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::nullopt;
    return executable.parent_path();
}

std::optional<std::string> environmentVariable(const std::string& name) { return variable(name.c_str()); }

}  // namespace kelvo::platform
