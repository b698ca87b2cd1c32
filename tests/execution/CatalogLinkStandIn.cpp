// The executor asks PrepareRegistry about protected applications, and PrepareRegistry's
// object file also names the clean catalog's protected paths. While the clean catalog is
// not part of the library this weak stand-in lets the test program link; a real
// definition in the library takes precedence over it. Delete this file once the catalog
// (CleanerRegistry.cpp) is in the library.
#include "kelvo/CleanerRegistry.h"

namespace kelvo::CleanerRegistry {

__attribute__((weak)) std::vector<std::filesystem::path> protectedPaths(const Environment& env) {
    return {env.home / "Library/Developer/Xcode/Archives", env.home / "Library/Developer/Xcode/UserData",
            env.home / "Library/Developer/CoreSimulator/Devices", env.home / ".android/avd", env.home / ".flutter",
            env.home / ".swiftpm"};
}

}  // namespace kelvo::CleanerRegistry
