#pragma once
// Start at login, the freedesktop way: an entry <application id>.desktop in the user's
// autostart folder ($XDG_CONFIG_HOME/autostart, else ~/.config/autostart). On means the
// file exists and says neither Hidden=true nor X-GNOME-Autostart-enabled=false. Switching
// on writes the entry atomically with Exec= the absolute path of the program; off removes it.
#include <filesystem>
#include <optional>
#include <string>

namespace kelvo::app {

struct Autostart {
    std::filesystem::path entry = liveEntry();
    std::filesystem::path program = runningProgram();

    bool enabled() const;
    // Nothing on success, else the system's description of the failure.
    std::optional<std::string> setEnabled(bool on) const;

    static std::filesystem::path liveEntry();
    static std::filesystem::path runningProgram();
};

}  // namespace kelvo::app
