#pragma once
// Offers the simulator runtimes the simulator tool reports as deletable and that were last
// used strictly before the cut-off (now minus months of exactly 30 days). Without a `now`
// there is no cut-off and every deletable runtime is offered, never-used ones included;
// with one, a runtime without a last-used date is never offered. Each target is the tool's
// own delete command with the size the tool reports (an identifier with characters other
// than letters, digits, ".", "_" and "-" is single-quoted in it); nothing is measured on disk. The
// lister (left out, the live one) is called once per scan; its failures simply give no runtimes.
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"
#include "kelvo/SimRuntime.h"

namespace kelvo {

class OldSimRuntimeDetector final : public CatalogCleaner {
public:
    OldSimRuntimeDetector(RuntimeLister lister, int olderThanMonths,
                          std::optional<std::chrono::system_clock::time_point> now);

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    int olderThanMonths() const { return olderThanMonths_; }
    const std::optional<std::chrono::system_clock::time_point>& now() const { return now_; }

private:
    RuntimeLister lister_;
    int olderThanMonths_;
    std::optional<std::chrono::system_clock::time_point> now_;
};

}  // namespace kelvo
