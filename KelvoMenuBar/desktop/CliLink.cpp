#include "desktop/CliLink.h"

#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo::app {

std::filesystem::path CliLink::besideApplication() {
    const auto directory = kelvo::platform::executableDirectory();
    return (directory ? *directory : std::filesystem::path(".")) / "kelvo";
}

CliLink::Outcome CliLink::install() const {
    // The tool itself must be there: a link to a link to nothing helps nobody.
    if (!platform::exists(tool)) return Outcome::notBundled;
    if (platform::createDirectories(linkFolder)) return Outcome::refused;
    std::error_code ignored;
    std::filesystem::remove(linkPath(), ignored);
    std::error_code error;
    std::filesystem::create_symlink(std::filesystem::absolute(tool, error), linkPath(), error);
    return error ? Outcome::refused : Outcome::installed;
}

std::string CliLink::fallbackCommand() const {
    std::error_code ignored;
    return "sudo ln -sf \"" + std::filesystem::absolute(tool, ignored).string() + "\" " + linkPath().string();
}

}  // namespace kelvo::app
