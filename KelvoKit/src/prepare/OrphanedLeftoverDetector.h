#pragma once
// Finds data that applications no longer installed left in the user's Library (support
// folders, caches, containers, HTTP storage, logs, saved state, preference files) and
// offers one target per bundle identifier, "leftover:<id>", in ascending identifier order.
// Candidates are the names found one level deep in those seven places; protected
// applications and vendors, identifiers an installed application accounts for, and
// anything not shaped like a reverse-DNS identifier are never offered, nor is a candidate
// whose locations together occupy nothing. The installed identifiers are the snapshot the
// detector was built with; a scan never re-reads the installed applications.
//
// An installed bundle whose identifier cannot be read makes the detector more careful,
// never less: no candidate is offered that has, as one dot-separated piece or a run of
// them, that bundle's name (compared without case, blanks, "-" and "_"), so an unreadable
// "Foo Bar.app" keeps com.vendor.FooBar and com.foo-bar.helper, and "Spotify.app" keeps
// com.spotify.client.
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"
#include "safety/ProtectedApps.h"

namespace kelvo {

class OrphanedLeftoverDetector final : public CatalogCleaner {
public:
    // The note of every leftover target, whatever found it (a fixed text, not looked up).
    static constexpr const char* leftoverNote = "App no instalada; datos sobrantes.";

    // unidentifiedAppNames: names (without ".app") of installed bundles whose identifier
    // could not be read.
    OrphanedLeftoverDetector(std::filesystem::path home, std::set<std::string> installedBundleIDs,
                             std::set<std::string> protectedBundleIDs, std::set<std::string> protectedNames,
                             const std::vector<std::string>& unidentifiedAppNames = {});

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    // True for an identifier that must never be offered (ProtectedApps::coversBundleID).
    bool isProtected(const std::string& bundleID) const { return protected_.coversBundleID(bundleID); }
    // True for an identifier that may belong to an installed bundle whose own identifier
    // could not be read (the rule above).
    bool mayBelongToUnidentifiedApp(const std::string& bundleID) const;

    const std::filesystem::path& home() const { return home_; }
    const std::set<std::string>& installedBundleIDs() const { return installedBundleIDs_; }
    const std::set<std::string>& protectedBundleIDs() const { return protected_.bundleIDs(); }
    const std::set<std::string>& protectedNames() const { return protected_.names(); }

private:
    // Names in the seven Library places that may be bundle identifiers (extensions of
    // preference files and saved states dropped), sorted and without repeats.
    std::set<std::string> collectCandidateBundleIDs() const;

    std::filesystem::path home_;
    std::set<std::string> installedBundleIDs_;
    ProtectedApps protected_;
    std::set<std::string> unidentifiedAppKeys_;  // names in the form matchKey gives
};

}  // namespace kelvo
