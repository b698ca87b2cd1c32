#pragma once
// When an application was last used. The live source asks /usr/bin/mdls and, where that
// gives nothing (or does not exist), takes the later modification date of the bundle and
// its Contents folder. The stub answers from a map keyed by bundle file name ("Foo.app").
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "kelvo/Dependency.h"

namespace kelvo {

using TimePoint = std::chrono::system_clock::time_point;

class AppMetadata {
public:
    virtual ~AppMetadata() = default;
    virtual std::optional<TimePoint> lastUsed(const std::filesystem::path& bundle) const = 0;
};

class LiveAppMetadata final : public AppMetadata {
public:
    std::optional<TimePoint> lastUsed(const std::filesystem::path& bundle) const override;
    // Parses the metadata tool's "yyyy-MM-dd HH:mm:ss Z" answer; nothing for "(null)" or junk.
    static std::optional<TimePoint> parseToolDate(const std::string& text);
};

// One live source, shared (it holds no state).
std::shared_ptr<const AppMetadata> liveAppMetadata();
using MetadataDependency = Dependency<std::shared_ptr<const AppMetadata>, &liveAppMetadata>;

class StubAppMetadata final : public AppMetadata {
public:
    explicit StubAppMetadata(std::map<std::string, TimePoint> dates) : dates(std::move(dates)) {}
    std::optional<TimePoint> lastUsed(const std::filesystem::path& bundle) const override;
    std::map<std::string, TimePoint> dates;
};

}  // namespace kelvo
