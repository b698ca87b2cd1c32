#include "kelvo/AppMetadata.h"

#include <algorithm>
#include <string_view>

#include "vocabulary/DateText.h"
#include "vocabulary/Paths.h"
#include "vocabulary/Text.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/Process.h"

namespace kelvo {
namespace {

// The Spotlight date, or nothing when the tool is missing, fails or has no date.
std::optional<TimePoint> spotlightLastUsed(const std::filesystem::path& bundle) {
    const auto outcome =
        platform::runProgram("/usr/bin/mdls", {"-raw", "-name", "kMDItemLastUsedDate", bundle.string()}, true);
    if (!outcome || outcome->exitStatus != 0) return std::nullopt;
    return LiveAppMetadata::parseToolDate(trimmed(outcome->standardOutput, " \t\n\v\f\r"));
}

// The later modification date of the bundle and of its Contents folder: installers and
// updates touch one or the other, so the later one is the better guess of the last use.
std::optional<TimePoint> modifiedLast(const std::filesystem::path& bundle) {
    const auto ofBundle = platform::modificationTime(bundle);
    const auto ofContents = platform::modificationTime(bundle / "Contents");
    if (ofBundle && ofContents) return std::max(*ofBundle, *ofContents);
    return ofBundle ? ofBundle : ofContents;
}

}  // namespace

std::shared_ptr<const AppMetadata> liveAppMetadata() {
    static const auto live = std::make_shared<const LiveAppMetadata>();
    return live;
}

std::optional<TimePoint> LiveAppMetadata::lastUsed(const std::filesystem::path& bundle) const {
    if (auto date = spotlightLastUsed(bundle)) return date;
    return modifiedLast(bundle);
}

std::optional<TimePoint> LiveAppMetadata::parseToolDate(const std::string& text) {
    // "yyyy-MM-dd HH:mm:ss Z", e.g. "2024-03-01 14:22:05 +0000"; the whole text must match.
    DateText reader(text);
    if (!reader.readDateAndTime(' ') || !reader.literal(' ')) return std::nullopt;
    const auto offset = reader.zoneOffset(/*withColon=*/false);
    if (!offset || !reader.atEnd()) return std::nullopt;
    return reader.instant(*offset);
}

std::optional<TimePoint> StubAppMetadata::lastUsed(const std::filesystem::path& bundle) const {
    const auto found = dates.find(Paths::lastComponent(bundle));
    if (found == dates.end()) return std::nullopt;
    return found->second;
}

}  // namespace kelvo
