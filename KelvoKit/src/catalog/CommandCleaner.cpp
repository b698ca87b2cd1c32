#include "catalog/CommandCleaner.h"

#include "kelvo/L10n.h"
#include "kelvo/platform/Process.h"

namespace kelvo {

CommandCleaner::CommandCleaner(std::string id, std::string name, Family family, std::string command, Level level,
                               Reversibility reversibility, RegenCost regenCost, std::int64_t estimateBytes,
                               ToolCheck toolAvailable, std::vector<std::string> guardedProcesses)
    : CatalogCleaner(std::move(id), std::move(name), family, level, reversibility, regenCost,
                     std::move(guardedProcesses)),
      command_(std::move(command)),
      estimateBytes_(estimateBytes),
      toolAvailable_(toolAvailable ? std::move(toolAvailable) : ToolCheck(&CommandCleaner::which)) {}

bool CommandCleaner::which(const std::string& tool) {
    const auto outcome = platform::runProgram("/usr/bin/which", {tool}, false);
    return outcome && outcome->exitStatus == 0;
}

std::string CommandCleaner::tool() const {
    // Only the space character separates; tabs and other white space belong to the word.
    const auto start = command_.find_first_not_of(' ');
    if (start == std::string::npos) return command_;
    const auto end = command_.find(' ', start);
    return command_.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

std::vector<CleanTarget> CommandCleaner::scan(const ScanContext& context) const {
    if (context.stop.stop_requested() || !toolAvailable_(tool())) return {};
    return {target(id(), name(), CleanKind::command(command_), estimateBytes_,
                   estimateBytes_ != 0 ? std::string() : CleanTarget::unknownSizeNote())};
}

}  // namespace kelvo
