#pragma once
// The subcommands of the kelvo tool. Each registers itself on the application and records
// the process's exit status when it runs: 0 success, 1 a failure of the work itself,
// 2 a usage error, or a clean the library refuses before it starts.
#include <CLI/CLI.hpp>

#include "kelvo/Environment.h"

namespace kelvo::tool {

inline constexpr int usageErrorStatus = 2;

void registerSizeCommand(CLI::App& app);
void registerConfigCommand(CLI::App& app);
void registerScanCommand(CLI::App& app);
void registerCleanCommand(CLI::App& app);
void registerPrepareCommand(CLI::App& app);

// --catalog macos|linux, for every subcommand; catalogProfile() is the choice, else the
// running system's profile, and liveEnvironment() the live environment built with it.
void registerCatalogOption(CLI::App& app);
CatalogProfile catalogProfile();
Environment liveEnvironment();

void setExitStatus(int status);
int exitStatus();

}  // namespace kelvo::tool
