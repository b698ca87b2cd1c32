#include "kelvo/LocalFiles.h"

#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {

bool LocalFiles::exists(const std::filesystem::path& path) { return platform::exists(path); }

bool LocalFiles::standsAt(const std::filesystem::path& path) {
    return platform::exists(path) || platform::isSymbolicLink(path).value_or(false);
}

std::optional<std::string> LocalFiles::read(const std::filesystem::path& path) { return platform::readFile(path); }

std::error_code LocalFiles::createDirectories(const std::filesystem::path& path) {
    return platform::createDirectories(path);
}

std::error_code LocalFiles::writeAtomically(const std::filesystem::path& path, const std::string& content) {
    if (const auto error = platform::createDirectories(path.parent_path())) return error;
    return platform::writeFileAtomically(path, content);
}

std::filesystem::path LocalFiles::besideExecutable(std::string_view name) {
    const auto directory = platform::executableDirectory();
    return (directory ? *directory : std::filesystem::path(".")) / name;
}

std::filesystem::path LocalFiles::installedData(std::string_view name) {
    return besideExecutable(KELVO_DATA_FROM_BINDIR) / name;
}

}  // namespace kelvo
