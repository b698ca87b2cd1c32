#pragma once
// Offers whole applications not used for a number of months: bundles found directly in
// the user-managed application folders (never the system's or the utilities folder) that
// are not protected, not running and whose last-used date lies strictly before the cut-off
// (now minus months of exactly 30 days). An application without any last-used date is
// never offered. Each target ("app:<bundle id>", or "app-path:<bundle path>" without an
// identifier) removes the bundle and the application's per-user data, permanently, so it
// is aggressive. Targets come in the order found (folders in order, entries as listed).
#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kelvo/AppMetadata.h"
#include "catalog/CatalogCleaner.h"
#include "kelvo/ProcessProbe.h"
#include "safety/ProtectedApps.h"

namespace kelvo {

class UnusedAppDetector final : public CatalogCleaner {
public:
    UnusedAppDetector(std::vector<std::filesystem::path> appDirs, std::filesystem::path home, int olderThanMonths,
                      TimePoint now, MetadataDependency metadata, ProbeDependency probe,
                      std::set<std::string> protectedBundleIDs,
                      std::set<std::string> protectedNames);

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    const std::vector<std::filesystem::path>& appDirs() const { return appDirs_; }
    const std::filesystem::path& home() const { return home_; }
    int olderThanMonths() const { return olderThanMonths_; }
    TimePoint now() const { return now_; }

private:
    std::vector<std::filesystem::path> appDirs_;
    std::filesystem::path home_;
    int olderThanMonths_;
    TimePoint now_;
    MetadataDependency metadata_;
    ProbeDependency probe_;
    ProtectedApps protected_;
};

}  // namespace kelvo
