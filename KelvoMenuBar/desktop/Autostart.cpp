#include "desktop/Autostart.h"

#include <QCoreApplication>
#include <cstdlib>
#include <sstream>

#include "kelvo/Environment.h"
#include "kelvo/LocalFiles.h"

namespace kelvo::app {
namespace {

// The program as the one argument of an Exec= line of the desktop entry format: "%" is
// doubled (a single one starts a field code); an argument holding a reserved character is
// quoted, with ", `, $ and \ escaped by a backslash inside the quotes; and every backslash
// of that is doubled again, because the whole value is a string whose own escape is "\\".
std::string execArgument(const std::string& path) {
    std::string doubled;
    for (char c : path) doubled += c == '%' ? std::string("%%") : std::string(1, c);
    if (doubled.find_first_of(" \t\n\"'\\><~|&;$*?#()`") == std::string::npos) return doubled;
    std::string quoted = "\"";
    for (char c : doubled) {
        if (c == '\\') quoted += "\\\\\\\\";
        else if (c == '\n') quoted += "\\n";
        else quoted += (c == '"' || c == '`' || c == '$' ? "\\\\" : "") + std::string(1, c);
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
