#include "kelvo/platform/GitRepository.h"

#include <fcntl.h>
#include <git2.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>

namespace kelvo::platform {
namespace {

void startLibrary() {
    static std::once_flag once;
    std::call_once(once, [] {
        git_libgit2_init();
        // Ownership matters to programs a repository's configuration would run; reading an
        // index runs none.
        git_libgit2_opts(GIT_OPT_SET_OWNER_VALIDATION, 0);
        for (const int level : {GIT_CONFIG_LEVEL_SYSTEM, GIT_CONFIG_LEVEL_XDG, GIT_CONFIG_LEVEL_GLOBAL,
                                GIT_CONFIG_LEVEL_PROGRAMDATA})
            git_libgit2_opts(GIT_OPT_SET_SEARCH_PATH, level, "");
    });
}

std::string lastGitError() {
    const git_error* error = git_error_last();
    return error && error->message ? error->message : "unknown libgit2 error";
}

struct RepositoryFree {
    void operator()(git_repository* repository) const { git_repository_free(repository); }
};
struct IndexFree {
    void operator()(git_index* index) const { git_index_free(index); }
};

bool sameFolder(const std::filesystem::path& first, const std::filesystem::path& second) {
    struct stat a {}, b {};
    return ::stat(first.c_str(), &a) == 0 && ::stat(second.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

}  // namespace

std::optional<GitPlace> findGitWorkTree(const std::filesystem::path& folder) {
    char resolved[PATH_MAX];
    if (!::realpath(folder.c_str(), resolved)) return GitPlace{folder, {}};
    std::string top = resolved;
    std::string relative;
    while (true) {
        const std::string marker = (top == "/" ? std::string() : top) + "/.git";
        struct stat status {};
        if (::fstatat(AT_FDCWD, marker.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return GitPlace{top, relative};
        if (errno != ENOENT && errno != ENOTDIR) return GitPlace{top, relative};
        if (top == "/") return std::nullopt;
        const auto slash = top.rfind('/');
        const std::string name = top.substr(slash + 1);
        relative = relative.empty() ? name : name + "/" + relative;
        top.resize(slash == 0 ? 1 : slash);
    }
}

GitIndexListing readGitIndex(const std::filesystem::path& workTree) {
    startLibrary();
    GitIndexListing listing;
    git_repository* opened = nullptr;
    if (git_repository_open_ext(&opened, workTree.c_str(), GIT_REPOSITORY_OPEN_NO_SEARCH | GIT_REPOSITORY_OPEN_CROSS_FS,
                                nullptr) != 0) {
        listing.error = lastGitError();
        return listing;
    }
    const std::unique_ptr<git_repository, RepositoryFree> repository(opened);
    const char* workdir = git_repository_workdir(repository.get());
    if (!workdir || !sameFolder(workdir, workTree)) {
        listing.error = "the repository keeps its work tree elsewhere";
        return listing;
    }
    git_index* loaded = nullptr;
    if (git_repository_index(&loaded, repository.get()) != 0) {
        listing.error = lastGitError();
        return listing;
    }
    const std::unique_ptr<git_index, IndexFree> index(loaded);
    const std::size_t count = git_index_entrycount(index.get());
    if (count > 0) listing.folders.emplace_back();
    // Entries come sorted by path, so an entry shares the folders of the one before it up to
    // where their paths part; only the folders past that point are new.
    std::string_view previous;
    for (std::size_t at = 0; at < count; ++at) {
        const git_index_entry* entry = git_index_get_byindex(index.get(), at);
        if (!entry || !entry->path) continue;
        const std::string_view path = entry->path;
        const std::size_t common =
            std::mismatch(path.begin(), path.end(), previous.begin(), previous.end()).first - path.begin();
        for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/', slash + 1))
            if (slash >= common) listing.folders.emplace_back(path.substr(0, slash));
        if ((entry->mode & 0170000) == 0160000) listing.folders.emplace_back(path);  // a submodule
        previous = path;
    }
    return listing;
}

}  // namespace kelvo::platform
