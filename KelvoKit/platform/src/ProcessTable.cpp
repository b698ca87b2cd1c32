#include "kelvo/platform/ProcessTable.h"

#include <cctype>

#include "OpenFlags.h"
#include "kelvo/platform/Descriptor.h"
#include "kelvo/platform/DirectoryReader.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo::platform {
namespace {

bool isProcessId(const char* name) {
    if (!*name) return false;
    for (const char* c = name; *c; ++c)
        if (!std::isdigit(static_cast<unsigned char>(*c))) return false;
    return true;
}

}  // namespace

std::optional<std::vector<RunningProcess>> listRunningProcesses() {
    const Descriptor proc(::open("/proc", openFlags::directory));
    if (!proc.valid()) return std::nullopt;
    std::vector<RunningProcess> processes;
    DirectoryReader().read(proc.get(), [&](const DirectoryRecord& entry) {
        if (!isProcessId(entry.name)) return true;
        const std::filesystem::path base = std::filesystem::path("/proc") / entry.name;
        // A process that ends while we read simply drops out.
        auto comm = readFile(base / "comm");
        if (!comm) return true;
        if (!comm->empty() && comm->back() == '\n') comm->pop_back();

        RunningProcess process;
        process.shortName = std::move(*comm);
        // Kernel threads and zombies have an empty command line; the name still counts.
        if (const auto cmdline = readFile(base / "cmdline")) {
            std::string text = *cmdline;
            while (!text.empty() && text.back() == '\0') text.pop_back();
            const auto firstEnd = text.find('\0');
            const std::string first = text.substr(0, firstEnd);
            const auto slash = first.rfind('/');
            process.programName = slash == std::string::npos ? first : first.substr(slash + 1);
            for (char& c : text)
                if (c == '\0') c = ' ';
            process.commandLine = std::move(text);
        }
        // Readable for the user's own processes; a deleted program keeps its old path plus " (deleted)".
        if (auto program = linkText(base / "exe")) process.executable = program->string();
        processes.push_back(std::move(process));
        return true;
    });
    return processes;
}

}  // namespace kelvo::platform
