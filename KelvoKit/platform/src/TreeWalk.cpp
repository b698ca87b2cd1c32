#include "kelvo/platform/TreeWalk.h"

#include <vector>

namespace kelvo::platform {
namespace {

void appendName(std::string& path, std::string_view name) {
    if (path.empty() || path.back() != '/') path.push_back('/');
    path.append(name);
}

// A subdirectory that is gone, or is no longer a directory, had nothing to read.
bool wasUnreadable(std::error_code error) {
    return error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory &&
           error != std::errc::too_many_symbolic_link_levels;
}

}  // namespace

WalkedDirectory::WalkedDirectory(DirectoryHandle handle, const std::string& path, std::size_t depth)
    : handle_(std::move(handle)), path_(&path), pathLength_(path.size()), depth_(depth) {
    listingError_ = handle_.forEachName([&](std::string_view name, EntryType type) {
        entries_.push_back(static_cast<char>(type));
        entries_.append(name);
        entries_.push_back('\0');
        return true;
    });
}

std::string WalkedDirectory::pathOf(std::string_view name) const {
    std::string joined = *path_;
    appendName(joined, name);
    return joined;
}

bool TreeWalk::runThrough(DirectoryHandle top, std::string topPath, void* target, Visitor visitor,
                          void* unreadTarget, UnreadVisitor unread) {
    std::string path = std::move(topPath);
    std::vector<WalkedDirectory> open;
    open.push_back(WalkedDirectory(std::move(top), path, 0));
    if (open.back().listingError_) unread(unreadTarget, path, open.back().listingError_);
    while (!open.empty()) {
        WalkedDirectory& current = open.back();
        if (current.next_ == current.entries_.size()) {
            open.pop_back();
            if (!open.empty()) path.resize(open.back().pathLength_);
            continue;
        }
        const auto type = static_cast<EntryType>(current.entries_[current.next_]);
        const std::string_view name = current.nameAt(current.next_);
        current.next_ += name.size() + 2;

        const WalkStep step = visitor(target, current, name, type);
        if (step == WalkStep::stop) return true;
        if (step == WalkStep::leave) current.next_ = current.entries_.size();
        if (step != WalkStep::enter || type != EntryType::directory) continue;
        std::error_code error;
        auto child = current.handle_.openChild(name, error);
        if (!child) {
            if (wasUnreadable(error)) unread(unreadTarget, current.pathOf(name), error);
            continue;
        }
        const std::size_t depth = current.depth_ + 1;
        appendName(path, name);
        // A directory with nothing left to visit is not needed again: its child takes its
        // place, so a long chain of folders holds one descriptor, not one per level.
        if (current.next_ == current.entries_.size()) open.pop_back();
        open.push_back(WalkedDirectory(std::move(*child), path, depth));
        if (open.back().listingError_) unread(unreadTarget, path, open.back().listingError_);
    }
    return false;
}

}  // namespace kelvo::platform
