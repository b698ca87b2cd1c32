#include "kelvo/ScanSchedule.h"

#include <array>
#include <charconv>
#include <sstream>

#include "kelvo/LocalFiles.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserServiceManager.h"

namespace kelvo {
namespace {

using Frequency = ScanSchedule::Frequency;
using Command = std::vector<std::string>;

constexpr std::array<std::pair<Frequency, std::string_view>, 3> frequencyNamesTable{{
    {Frequency::off, "off"},
    {Frequency::daily, "daily"},
    {Frequency::weekly, "weekly"},
}};

// The program's path as the first word of an ExecStart= line: "%" starts a specifier there,
// so it is doubled, while "$" is taken as written; a backslash or a quote is escaped, and a
// path holding a blank is quoted.
std::string execPath(const std::string& path) {
    std::string escaped;
    for (const char c : path) {
        if (c == '%') escaped += "%%";
        else if (c == '\\' || c == '"') escaped += std::string{'\\', c};
        else if (c == '\n') escaped += "\\n";
        else escaped += c;
    }
    if (path.find_first_of(" \t\n'\"") == std::string::npos) return escaped;
    return "\"" + escaped + "\"";
}

std::string commandLine(const std::vector<Command>& commands) {
    std::string line;
    for (const auto& command : commands) {
        line += line.empty() ? "systemctl --user" : " && systemctl --user";
        for (const auto& word : command) line += " " + word;
    }
    return line;
}

// The value of the first line "key=value" of a unit file's text.
std::optional<std::string> unitValue(const std::string& text, std::string_view key) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(key) && line.size() > key.size() && line[key.size()] == '=')
            return line.substr(key.size() + 1);
    return std::nullopt;
}

}  // namespace

std::shared_ptr<const platform::UserServiceManager> liveUserServiceManager() {
    static const auto manager = std::make_shared<const platform::LiveUserServiceManager>();
    return manager;
}

ScanSchedule ScanSchedule::forEnvironment(const Environment& env) {
    ScanSchedule schedule;
    schedule.unitFolder = env.configHome() / "systemd/user";
    schedule.program = LocalFiles::besideExecutable("kelvo");
    return schedule;
}

std::string_view ScanSchedule::rawValue(Frequency frequency) {
    for (const auto& [known, name] : frequencyNamesTable)
        if (known == frequency) return name;
    return "off";
}

std::optional<ScanSchedule::Frequency> ScanSchedule::frequencyFromRawValue(std::string_view raw) {
    for (const auto& [frequency, name] : frequencyNamesTable)
        if (name == raw) return frequency;
    return std::nullopt;
}

std::vector<std::string> ScanSchedule::frequencyNames() {
    std::vector<std::string> names;
    for (const auto& entry : frequencyNamesTable) names.emplace_back(entry.second);
    return names;
}

std::string ScanSchedule::serviceUnit() const {
    return "[Unit]\n"
           "Description=Kelvo: look for disk space that can be freed\n"
           "Documentation=man:kelvo(1)\n"
           "\n"
           "[Service]\n"
           "Type=oneshot\n"
           "ExecStart=" + execPath(program.string()) + " scan --quiet --notify-above " +
           std::to_string(notifyAboveBytes) + "\n"
           // A background look: it yields the processor and the disk to everything else.
           "Nice=19\n"
           "IOSchedulingClass=idle\n";
}

std::string ScanSchedule::timerUnit(Frequency frequency) const {
    const std::string calendar(rawValue(frequency));
    return "[Unit]\n"
           "Description=Kelvo: a " + calendar + " look for disk space that can be freed\n"
           "Documentation=man:kelvo(1)\n"
           "\n"
           "[Timer]\n"
           "OnCalendar=" + calendar + "\n"
           "Persistent=true\n"
           "\n"
           "[Install]\n"
           "WantedBy=timers.target\n";
}

ScanSchedule::Outcome ScanSchedule::set(Frequency frequency) const {
    Outcome outcome;
    outcome.frequency = frequency;
    const auto fileFailed = [&outcome](const std::filesystem::path& path, std::error_code error) {
        outcome.failedFile = path;
        outcome.fileError = error;
        return outcome;
    };
    const std::string timer(timerName);
    std::vector<Command> commands;
    if (frequency != Frequency::off) {
        if (auto error = platform::createDirectories(unitFolder)) return fileFailed(unitFolder, error);
        for (const auto& [path, text] : {std::pair{servicePath(), serviceUnit()}, {timerPath(), timerUnit(frequency)}}) {
            if (auto error = platform::writeFileAtomically(path, text)) return fileFailed(path, error);
            outcome.files.push_back(path);
        }
        commands = {{"daemon-reload"}, {"enable", "--now", timer}};
    } else if (manager->running()) {
        // Stopped and disabled while its file is still there to name it.
        if (platform::exists(timerPath())) commands.push_back({"disable", "--now", timer});
        commands.push_back({"daemon-reload"});
    }

    // Runs commands[first, last); at the first failure the rest is left for the user.
    const auto run = [&](std::size_t first, std::size_t last) {
        for (std::size_t index = first; index < last; ++index) {
            const auto status = manager->systemctl(commands[index]);
            if (status == 0) continue;
            outcome.manager = status ? Outcome::Manager::commandFailed : Outcome::Manager::notRunning;
            outcome.commandStatus = status;
            outcome.laterCommand = commandLine({commands.begin() + static_cast<std::ptrdiff_t>(index),
                                                commands.begin() + static_cast<std::ptrdiff_t>(last)});
            return false;
        }
        return true;
    };
    if (frequency != Frequency::off) {
        if (!manager->running()) {
            outcome.manager = Outcome::Manager::notRunning;
            outcome.laterCommand = commandLine(commands);
        } else {
            run(0, commands.size());
        }
        return outcome;
    }

    // Off: a timer the manager would not let go stays, files and all, so that it can be named again.
    const bool disables = !commands.empty() && commands.front().front() == "disable";
    if (disables && !run(0, 1)) return outcome;
    const auto wantsLink = unitFolder / "timers.target.wants" / timerName;
    for (const auto& path : {servicePath(), timerPath(), wantsLink}) {
        const bool present = platform::isPresent(path).value_or(true);
        if (auto error = platform::removeFile(path)) return fileFailed(path, error);
        if (present && path != wantsLink) outcome.files.push_back(path);
    }
    run(disables ? 1 : 0, commands.size());
    return outcome;
}

ScanSchedule::Status ScanSchedule::status() const {
    Status status;
    const auto timer = LocalFiles::read(timerPath());
    if (!timer) {
        status.frequency = Frequency::off;
        return status;
    }
    if (const auto calendar = unitValue(*timer, "OnCalendar"))
        if (const auto frequency = frequencyFromRawValue(*calendar); frequency && frequency != Frequency::off)
            status.frequency = frequency;
    if (const auto service = LocalFiles::read(servicePath()))
        if (const auto exec = unitValue(*service, "ExecStart")) {
            const std::string option = "--notify-above ";
            if (const auto at = exec->rfind(option); at != std::string::npos) {
                const char* digits = exec->data() + at + option.size();
                std::int64_t bytes = 0;
                const auto [end, error] = std::from_chars(digits, exec->data() + exec->size(), bytes);
                if (error == std::errc() && (end == exec->data() + exec->size() || *end == ' '))
                    status.notifyAboveBytes = bytes;
            }
        }
    return status;
}

}  // namespace kelvo
