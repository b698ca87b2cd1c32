#pragma once
// How a target is removed: by deleting a list of absolute paths, or by running one
// shell command line that lets a tool clean up after itself.
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace kelvo {

class CleanKind {
public:
    static CleanKind paths(std::vector<std::filesystem::path> paths);
    static CleanKind command(std::string commandLine);

    bool isCommand() const { return std::holds_alternative<std::string>(value_); }
    bool isPath() const { return !isCommand(); }
    // The paths of a path kind; empty for a command.
    const std::vector<std::filesystem::path>& pathList() const;
    // The command line of a command kind; empty for paths.
    const std::string& commandLine() const;

    // Same case, and equal path lists element by element or equal command strings.
    friend bool operator==(const CleanKind&, const CleanKind&) = default;

private:
    explicit CleanKind(std::variant<std::vector<std::filesystem::path>, std::string> value)
        : value_(std::move(value)) {}
    std::variant<std::vector<std::filesystem::path>, std::string> value_;
};

}  // namespace kelvo
