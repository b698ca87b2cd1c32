#pragma once
// A tool's own clean-up command ("brew cleanup -s", "docker system prune -f"), offered as
// one target whose removal runs the whole command line through the shell. Nothing is
// measured: the target's size is the fixed estimate (0 = unknown, which the target's note
// says). The target is offered only when the tool, the command's first word, is found;
// the check runs on every scan and may run on any thread.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"

namespace kelvo {

class CommandCleaner final : public CatalogCleaner {
public:
    using ToolCheck = std::function<bool(const std::string& tool)>;

    // An empty toolAvailable means CommandCleaner::which.
    CommandCleaner(std::string id, std::string name, Family family, std::string command, Level level,
                   Reversibility reversibility, RegenCost regenCost, std::int64_t estimateBytes,
                   ToolCheck toolAvailable = {}, std::vector<std::string> guardedProcesses = {});

    // True when `/usr/bin/which tool` can be started and exits with status 0.
    static bool which(const std::string& tool);

    // One target when the tool is available, none otherwise.
    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    // The text before the first space (only " " separates; leading spaces are skipped);
    // the whole command when it holds no other piece.
    std::string tool() const;

    const std::string& command() const { return command_; }
    std::int64_t estimateBytes() const { return estimateBytes_; }
    const ToolCheck& toolAvailable() const { return toolAvailable_; }

private:
    std::string command_;
    std::int64_t estimateBytes_;
    ToolCheck toolAvailable_;
};

}  // namespace kelvo
