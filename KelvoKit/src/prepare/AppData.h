#pragma once
// Where an application keeps its per-user data, and whether a bundle identifier found in
// the user's Library belongs to no installed application and is worth offering.
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace kelvo::AppData {

// The existing data locations of a bundle identifier under home/Library, in fixed order:
// Application Support, Caches, Containers, HTTPStorages, Logs, Saved Application State
// (".savedState"), Preferences (".plist").
std::vector<std::filesystem::path> leftoverPaths(const std::string& bundleID, const std::filesystem::path& home);
// True only for a reverse-DNS identifier that no installed application, system component,
// helper or vendor family accounts for.
bool isOrphanBundleID(const std::string& bundleID, const std::set<std::string>& installed);
bool looksLikeReverseDNS(const std::string& text);

}  // namespace kelvo::AppData
