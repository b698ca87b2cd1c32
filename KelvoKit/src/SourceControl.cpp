#include "kelvo/SourceControl.h"

#include <algorithm>

#include "kelvo/platform/GitRepository.h"

namespace kelvo {

SourceControl::Index::Index(std::vector<std::string> trackedPaths) : tracked_(std::move(trackedPaths)) {
    std::sort(tracked_.begin(), tracked_.end());
}

SourceControl::Index SourceControl::Index::unreadable(std::string reason) {
    Index index({});
    index.unreadableBecause_ = std::move(reason);
    return index;
}

// Byte order keeps every path below a folder together, where "folder/" would sort. An
// entry at the folder itself is a submodule: it holds tracked files too.
bool SourceControl::Index::holdsTrackedFiles(std::string_view folder) const {
    if (folder.empty()) return !tracked_.empty();
    std::string prefix(folder);
    if (std::binary_search(tracked_.begin(), tracked_.end(), prefix)) return true;
    prefix.push_back('/');
    const auto found = std::lower_bound(tracked_.begin(), tracked_.end(), prefix);
    return found != tracked_.end() && found->starts_with(prefix);
}

std::optional<SourceControl::Place> LiveSourceControl::workTreeHolding(const std::filesystem::path& folder) const {
    auto found = platform::findGitWorkTree(folder);
    if (!found) return std::nullopt;
    return Place{std::move(found->workTree), std::move(found->relative)};
}

SourceControl::Index LiveSourceControl::read(const std::filesystem::path& workTree) const {
    auto listing = platform::readGitIndex(workTree);
    if (!listing.error.empty()) return Index::unreadable(std::move(listing.error));
    return Index(std::move(listing.paths));
}

std::shared_ptr<const SourceControl> liveSourceControl() {
    static const auto live = std::make_shared<const LiveSourceControl>();
    return live;
}

}  // namespace kelvo
