#pragma once
// A folder whose subfolders are independent versions or products (NDK versions, system
// images, per-version IDE caches, scratch folders): each qualifying subfolder is offered
// as a target of its own, "<id>/<entry>" named "<name>: <entry>", so old versions can be
// removed one by one. A subfolder qualifies when it is visible (no leading dot), is a
// directory itself (a link to one is not), starts with one of the prefixes (any name when
// there are none), carries the marks (PlaceMarks; none: any) and measures at least one
// byte. A missing or unreadable parent yields no target, and so does a parent or subfolder
// holding a git work tree at its top: a clone is never a version to remove.
#include <filesystem>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"
#include "catalog/PlaceMarks.h"

namespace kelvo {

class VersionedDirCleaner final : public CatalogCleaner {
public:
    VersionedDirCleaner(std::string id, std::string name, Family family, std::filesystem::path parent,
                        std::vector<std::string> prefixes, Level level, Reversibility reversibility,
                        RegenCost regenCost, PlaceMarks::Marks marks = {});

    // Targets in the order the parent lists its entries (not sorted).
    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    const std::filesystem::path& parent() const { return parent_; }
    const std::vector<std::string>& prefixes() const { return prefixes_; }
    const PlaceMarks::Marks& marks() const { return marks_; }

private:
    bool admits(const std::string& entryName) const;

    std::filesystem::path parent_;
    std::vector<std::string> prefixes_;
    PlaceMarks::Marks marks_;
};

}  // namespace kelvo
