#pragma once
// The catalog of the clean domain: every place where developer tool chains keep data that
// can be regenerated, as an ordered list of detectors (103 entries; 102 when no Flutter
// SDK cache is known). Building the list touches no file and runs no tool.
#include <filesystem>
#include <vector>

#include "kelvo/Cleaner.h"
#include "kelvo/Environment.h"

namespace kelvo::CleanerRegistry {

CleanerList makeCleaners(const Environment& env);
// Paths never deleted, nor anything inside them, nor any folder holding them.
std::vector<std::filesystem::path> protectedPaths(const Environment& env);

}  // namespace kelvo::CleanerRegistry
