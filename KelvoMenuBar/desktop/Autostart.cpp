#include "desktop/Autostart.h"

#include <QCoreApplication>
#include <cstdlib>
#include <sstream>

#include "kelvo/Environment.h"
#include "kelvo/LocalFiles.h"

namespace kelvo::app {
namespace {

// Exec= quoting of the desktop entry format: quoted when it holds anything but plain characters.
std::string execArgument(const std::string& path) {
    if (path.find_first_of(" \t\"'\\$`") == std::string::npos) return path;
    std::string quoted = "\"";
    for (char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += "\\\\";
        quoted += c;
    }
    return quoted + "\"";
}

}  // namespace

std::filesystem::path Autostart::liveEntry() {
    const char* configHome = std::getenv("XDG_CONFIG_HOME");
    const std::filesystem::path base = configHome && std::filesystem::path(configHome).is_absolute()
                                           ? std::filesystem::path(configHome)
                                           : Environment::liveHome() / ".config";
    return base / "autostart" / (std::string(KELVO_APP_ID) + ".desktop");
}

std::filesystem::path Autostart::runningProgram() {
    return QCoreApplication::applicationFilePath().toStdString();
}

bool Autostart::enabled() const {
    const auto text = LocalFiles::read(entry);
    if (!text) return false;
    std::istringstream lines(*text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false") return false;
    }
    return true;
}

std::optional<std::string> Autostart::setEnabled(bool on) const {
    std::error_code error;
    if (!on) {
        std::filesystem::remove(entry, error);
    } else {
        const std::string content = "[Desktop Entry]\nType=Application\nName=Kelvo Cleaner\nExec=" +
                                    execArgument(program.string()) + "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
        error = LocalFiles::writeAtomically(entry, content);
    }
    if (error) return error.message();
    return std::nullopt;
}

}  // namespace kelvo::app
