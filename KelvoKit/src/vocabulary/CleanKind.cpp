#include "kelvo/CleanKind.h"

namespace kelvo {

CleanKind CleanKind::paths(std::vector<std::filesystem::path> paths) { return CleanKind(std::move(paths)); }

CleanKind CleanKind::command(std::string commandLine) { return CleanKind(std::move(commandLine)); }

const std::vector<std::filesystem::path>& CleanKind::pathList() const {
    static const std::vector<std::filesystem::path> none;
    const auto* list = std::get_if<std::vector<std::filesystem::path>>(&value_);
    return list ? *list : none;
}

const std::string& CleanKind::commandLine() const {
    static const std::string none;
    const auto* line = std::get_if<std::string>(&value_);
    return line ? *line : none;
}

}  // namespace kelvo
