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

#include "kelvo/Cleaner.h"
#include "kelvo/SimRuntime.h"

namespace kelvo {

class OldSimRuntimeDetector final : public Cleaner {
public:
    OldSimRuntimeDetector(RuntimeLister lister, int olderThanMonths,
                          std::optional<std::chrono::system_clock::time_point> now);

    const std::string& id() const override { return id_; }
    const std::string& name() const override { return name_; }
    Family family() const override { return Family::simulators; }
    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    int olderThanMonths() const { return olderThanMonths_; }
    const std::optional<std::chrono::system_clock::time_point>& now() const { return now_; }

private:
    std::string id_ = "sim-runtimes";
    std::string name_ = "Runtimes de simulador viejos";
    RuntimeLister lister_;
    int olderThanMonths_;
    std::optional<std::chrono::system_clock::time_point> now_;
};

}  // namespace kelvo
