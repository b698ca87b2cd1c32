#include "desktop/CliLink.h"

#include "kelvo/LocalFiles.h"

namespace kelvo::app {

std::filesystem::path CliLink::besideApplication() {
    return LocalFiles::besideExecutable("kelvo");
}

CliLink::Outcome CliLink::install() const {
    // The tool itself must be there: a link to a link to nothing helps nobody.
    if (!LocalFiles::exists(tool)) return Outcome::notBundled;
    if (LocalFiles::createDirectories(linkFolder)) return Outcome::refused;
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
