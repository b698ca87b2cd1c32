#pragma once
// The manual page and the shell completions of the tool, rendered from the tool's own
// command tree (the CLI11 application with its subcommands, options and descriptions), so
// that a command or option added there appears everywhere at once. Hidden subcommands
// (those in no group) are left out. What an option's value may be is the one thing the tree
// does not say; valueKind() tells it, and the scripts ask `kelvo __complete KIND` for the
// words of the dynamic kinds, so target ids and families follow the installed catalog.
#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::tool {

// What a value is completed with: names the tool lists, files, or nothing.
enum class ValueKind { families, ids, catalogs, commands, files };

// The kind of the value of an option (by its long name, "--family") or positional (by its
// name, "paths"); nothing for a free value such as a number.
std::optional<ValueKind> valueKind(std::string_view optionName);
// The word `kelvo __complete` takes for a dynamic kind ("families", "ids", "catalogs",
// "commands"); nothing for files.
std::optional<std::string_view> completionWord(ValueKind kind);

// roff for man(1), section 1. The footer's "Title: text" lines become sections.
std::string manPage(const CLI::App& app, std::string_view version);
std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);
std::string fishCompletion(const CLI::App& app);

}  // namespace kelvo::tool
