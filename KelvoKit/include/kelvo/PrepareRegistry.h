#pragma once
// The prepare domain's catalog: its three detectors, the folders searched for unused
// applications, its protected paths, and the applications that are never touched
// (ProtectedApps::standard(), which the detectors are built with).
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kelvo/AppMetadata.h"
#include "kelvo/CatalogProfile.h"
#include "kelvo/Cleaner.h"
#include "kelvo/ProcessProbe.h"
#include "kelvo/SimRuntime.h"

namespace kelvo {

struct Environment;

namespace PrepareRegistry {

// ProtectedApps::standard(), under the names the catalog gives them.
const std::set<std::string>& protectedBundleIDs();
const std::set<std::string>& protectedNames();  // lower case
bool isProtectedBundleID(const std::string& bundleID);
bool isProtectedName(const std::string& name);

// "/Applications" and home/Applications.
std::vector<std::filesystem::path> userAppDirs(const Environment& env);
std::vector<std::filesystem::path> prepareProtectedPaths(const Environment& env);

// The macOS profile: the leftover, unused-application and old-runtime detectors, in that
// order; lists the installed applications (appIndexDirs, or the standard folders when
// absent) once, and the leftover detector gets their identifiers and the names of those
// whose identifier cannot be read. The Linux profile: the leftover detector of Flatpak and
// Snap data, with the installations read once from under systemRoot (FLATPAK_SYSTEM_DIR,
// FLATPAK_CONFIG_DIR and FLATPAK_USER_DIR win where set), then the old-runtime detector of
// the version managers in place of simulator runtimes. Linux has no record of when an
// application was last used, so unused applications are not looked for there.
// The families the profile's detectors report, in declaration order.
std::vector<Family> families(CatalogProfile profile);
CleanerList makePreparers(const Environment& env, int olderThanMonths, std::chrono::system_clock::time_point now,
                          MetadataDependency metadata, RuntimeLister simLister,
                          const std::optional<std::vector<std::filesystem::path>>& appIndexDirs,
                          ProbeDependency probe, const std::filesystem::path& systemRoot = "/");

}  // namespace PrepareRegistry
}  // namespace kelvo
