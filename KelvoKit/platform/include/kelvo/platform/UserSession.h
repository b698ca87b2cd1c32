#pragma once
// Who is running and where: home and temporary directories, the preferred language.
#include <filesystem>
#include <optional>
#include <string>

namespace kelvo::platform {

// $HOME when set and not empty, else the password database's entry for the user; nothing
// when neither gives one.
std::optional<std::filesystem::path> homeDirectory();
// The user id whose rights this process uses (the effective one).
unsigned currentUserID();
// Where programs keep per-user state that outlives a run: $XDG_STATE_HOME when it is an
// absolute path (relative values are invalid and ignored), else home/.local/state; nothing
// when there is no home either.
std::optional<std::filesystem::path> stateHome();
// $TMPDIR when set and not empty, else /tmp.
std::filesystem::path temporaryDirectory();
// The language code of the first of LC_ALL, LC_MESSAGES, LANG that is set and not empty
// ("es" for es_ES.UTF-8); nothing when none is, or it is "C"/"POSIX".
std::optional<std::string> preferredLanguage();
// The directory of the running executable; nothing when it cannot be found.
std::optional<std::filesystem::path> executableDirectory();
// A variable of this process's environment; nothing when it is unset or empty.
std::optional<std::string> environmentVariable(const std::string& name);

}  // namespace kelvo::platform
