#pragma once
// Finds what sandboxed applications that are no longer installed left in the home:
// Flatpak's ~/.var/app/<id> and Snap's ~/snap/<name>. Each source names the folder whose
// subfolders are per-application data and the applications installed; a visible subfolder
// (a link is not one) of an application not installed is a leftover, offered as one
// target "leftover:<prefix><name>", moderate and user data (documents and saves may be in
// it), so it is never preselected. A source whose installed list is unknown offers
// nothing (and says why, when it has data to offer), protected applications are never
// offered, nor is a folder occupying nothing.
// Targets come source by source, in ascending name order.
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "catalog/CatalogCleaner.h"

namespace kelvo {

class PackageLeftoverDetector final : public CatalogCleaner {
public:
    struct Source {
        std::filesystem::path dataFolder;                // ~/.var/app, ~/snap
        std::string idPrefix;                            // put before the name in the target id
        std::optional<std::set<std::string>> installed;  // nothing: unknown
        std::function<bool(const std::string& name)> isProtected;
        std::string unknownNote{};  // localised; said when installed is unknown
    };

    explicit PackageLeftoverDetector(std::vector<Source> sources);

    std::vector<CleanTarget> scan(const ScanContext& context) const override;
    using Cleaner::scan;

    const std::vector<Source>& sources() const { return sources_; }

private:
    std::vector<Source> sources_;
};

}  // namespace kelvo
