#include "kelvo/SourceControl.h"

#include <algorithm>

#include "kelvo/platform/GitRepository.h"

namespace kelvo {

SourceControl::Index::Index(std::vector<std::string> trackedFolders) : folders_(std::move(trackedFolders)) {
    std::sort(folders_.begin(), folders_.end());
    folders_.erase(std::unique(folders_.begin(), folders_.end()), folders_.end());
}

SourceControl::Index SourceControl::Index::unreadable(std::string reason) {
    Index index({});
    index.unreadableBecause_ = std::move(reason);
    return index;
}

bool SourceControl::Index::holdsTrackedFiles(std::string_view folder) const {
    return std::binary_search(folders_.begin(), folders_.end(), folder);
}

std::optional<SourceControl::Place> LiveSourceControl::workTreeHolding(const std::filesystem::path& folder) const {
    auto found = platform::findGitWorkTree(folder);
    if (!found) return std::nullopt;
    return Place{std::move(found->workTree), std::move(found->relative)};
}

SourceControl::Index LiveSourceControl::read(const std::filesystem::path& workTree) const {
    auto listing = platform::readGitIndex(workTree);
    if (!listing.error.empty()) return Index::unreadable(std::move(listing.error));
    return Index(std::move(listing.folders));
}

std::shared_ptr<const SourceControl> liveSourceControl() {
    static const auto live = std::make_shared<const LiveSourceControl>();
    return live;
}

}  // namespace kelvo
