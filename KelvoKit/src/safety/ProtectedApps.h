#pragma once
// The applications and vendors that are never offered nor removed: a set of bundle
// identifiers and a set of lower-case application names. `standard()` holds the fixed lists
// (the developer tools, terminals and browsers users depend on); detectors may be built
// with other lists. Immutable once built, safe to share between threads.
#include <optional>
#include <set>
#include <string>

namespace kelvo {

class ProtectedApps {
public:
    ProtectedApps(std::set<std::string> bundleIDs, std::set<std::string> names);
    static const ProtectedApps& standard();

    // "com.google" for "com.google.android.studio"; nothing when either of the first two
    // dot-separated pieces is missing or empty.
    static std::optional<std::string> brandPrefix(const std::string& text);

    // True for a protected identifier, a sub-component of one ("<id>.<more>"), one of a
    // protected vendor (same brand prefix), or one whose last non-empty piece, lower-cased,
    // is a protected name.
    bool coversBundleID(const std::string& bundleID) const;
    // True when the name, lower-cased, is a protected name.
    bool coversName(const std::string& name) const;

    const std::set<std::string>& bundleIDs() const { return bundleIDs_; }
    const std::set<std::string>& names() const { return names_; }

private:
    std::set<std::string> bundleIDs_;
    std::set<std::string> names_;  // lower case
    std::set<std::string> brandPrefixes_;
};

}  // namespace kelvo
