#pragma once
// The last word on whether a path may be deleted. A path is deletable only when, with
// symbolic links resolved as far as it exists and then standardised, it lies strictly
// inside an allowed root, is not the home, and neither equals, lies inside nor contains a
// protected path or user exclusion. The lists are kept as given and normalised at every
// question, so a link that changes between two questions is seen by the second. The guard
// decides on paths alone; what a path is (file, directory, link) is the executor's check.
#include <filesystem>
#include <vector>

namespace kelvo {

struct Environment;

struct SafetyGuard {
    std::filesystem::path home;
    std::vector<std::filesystem::path> allowedRoots;
    std::vector<std::filesystem::path> protectedPaths;
    std::vector<std::filesystem::path> extraExclusions;

    bool isDeletable(const std::filesystem::path& path) const;
    // The normal form every comparison uses: links resolved as far as the path exists,
    // then standardised.
    static std::string normalForm(const std::filesystem::path& path);
};

}  // namespace kelvo
