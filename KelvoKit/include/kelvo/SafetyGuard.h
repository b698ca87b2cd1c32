#pragma once
// The last word on whether a path may be deleted. A path is deletable only when, with
// symbolic links resolved as far as it exists and then standardised, it lies strictly
// inside an allowed root (a root itself is never deletable), is not the home, and neither
// equals, lies inside nor contains a protected path or user exclusion. "Inside" is a string
// test on whole components: /Users/ab/x is not inside /Users/a; nothing lies inside "/",
// and canonically equivalent Unicode spellings are the same path (vocabulary/Paths.h).
//
// A home that is not an absolute path of its own (empty, relative, or resolving to "/")
// anchors nothing: the guard then refuses every path. `refusalFor` states the same rule
// for a whole environment, so that the services refuse a clean before it starts.
//
// The lists are kept as given and normalised afresh at every question, so a link that
// appears or changes between two questions is seen by the second. The guard decides on
// paths alone; what a path is (file, directory, link) and who owns it is the executor's
// check. An empty path names nothing and is never deletable; empty list entries are
// passed over. The guard is an immutable value, safe to share between threads.
//
// A scan asks the same question before it offers anything, so that nothing the guard
// would refuse is offered: it takes the lists in normal form once (`settled`) and judges
// every path it found against them, with the reason, so it can say what it left out.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kelvo/Environment.h"
#include "kelvo/Reason.h"

namespace kelvo {

struct SafetyGuard {
    // Why a path is not deletable, in the order the rules are tried.
    enum class Refusal {
        outsideAllowedRoots,  // inside no allowed root (or the empty path)
        home,                 // the home itself, or no home that anchors removals
        protectedPath,        // equals, lies inside or holds a protected path
        exclusion,            // the same for one of the user's exclusions
    };

    // The guard's lists in normal form, taken once: judges many paths while nothing is
    // removed in between. A removal asks the guard itself, which normalises afresh.
    class Settled {
    public:
        [[nodiscard]] std::optional<Refusal> refusal(const std::filesystem::path& path) const;

    private:
        friend struct SafetyGuard;
        bool anchored_ = false;
        std::string home_;
        std::vector<std::string> roots_;
        std::vector<std::string> protected_;
        std::vector<std::string> exclusions_;
    };

    std::filesystem::path home;
    std::vector<std::filesystem::path> allowedRoots;
    std::vector<std::filesystem::path> protectedPaths;
    std::vector<std::filesystem::path> extraExclusions;  // treated exactly like protectedPaths

    [[nodiscard]] bool isDeletable(const std::filesystem::path& path) const { return !refusal(path); }
    // Nothing when the path is deletable.
    [[nodiscard]] std::optional<Refusal> refusal(const std::filesystem::path& path) const { return settled().refusal(path); }
    Settled settled() const;
    // The normal form every comparison uses: links resolved as far as the path exists (the
    // rest kept as written), then standardised; a relative path is taken from the current
    // directory. Empty for an empty path.
    static std::string normalForm(const std::filesystem::path& path);
    // Whether removals may be anchored at the folder: it is absolute and does not resolve to "/".
    static bool anchorsRemoval(const std::filesystem::path& folder);
    // Why nothing may be removed in this environment: its home or temporary folder
    // anchors no removal (an unresolvable home is taken as "/", see Environment::liveHome).
    // Nothing when both can.
    [[nodiscard]] static std::optional<Reason> refusalFor(const Environment& env);
};

}  // namespace kelvo
