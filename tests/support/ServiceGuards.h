#pragma once
// The safety guards the two services build, for a home and temporary folder of a test's
// own: tests of removal use the guards the product uses, never a copy of their lists.
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/CleanService.h"
#include "kelvo/Environment.h"
#include "kelvo/PrepareService.h"

namespace kelvo::testing {

inline Environment environmentAt(const std::filesystem::path& home, const std::filesystem::path& tmpDir,
                                 std::vector<std::string> extraExclusions = {}) {
    return {.home = home, .tmpDir = tmpDir, .extraExclusions = std::move(extraExclusions)};
}

inline SafetyGuard cleanGuard(const Environment& env) {
    return CleanService{.env = env, .probe = {}, .runCommand = {}}.guard();
}

inline SafetyGuard prepareGuard(const Environment& env) {
    return PrepareService{.env = env, .probe = {}, .runCommand = {}, .metadata = {}, .simLister = {}, .appIndexDirs = {}}
        .guard();
}

}  // namespace kelvo::testing
