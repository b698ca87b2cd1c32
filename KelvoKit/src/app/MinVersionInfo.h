#pragma once
// The published minimum-version document: a JSON object whose text member "minVersion"
// names the lowest version allowed to run. Other members are ignored; a document without
// a text "minVersion" (or that is no JSON object) does not decode.
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

struct MinVersionInfo {
    std::string minVersion;

    static std::optional<MinVersionInfo> decode(std::string_view bytes);
    std::string encoded() const;
    friend bool operator==(const MinVersionInfo&, const MinVersionInfo&) = default;
};

}  // namespace kelvo
