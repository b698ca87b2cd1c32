#include <gtest/gtest.h>

#include "prepare/ProjectPins.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

// The walk reads pins down to maxDepth folders below a root and no deeper, whatever the
// depth asked.
TEST(ProjectPins, TheWalkStopsAtItsDepth) {
    testing::TempDir root;
    for (const char* folder : {"", "a/", "a/b/", "a/b/c/"}) testing::writeText(root / (std::string(folder) + ".python-version"), "3.12\n");
    for (int depth = 0; depth <= 3; ++depth) {
        const auto found = ProjectPins::read({root.path()}, {".python-version"}, {}, depth);
        EXPECT_EQ(found.pins.size(), static_cast<std::size_t>(depth + 1)) << depth;
    }
}

}  // namespace
}  // namespace kelvo
