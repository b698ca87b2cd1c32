#include "app/MinVersionInfo.h"

#include <nlohmann/json.hpp>

namespace kelvo {

std::optional<MinVersionInfo> MinVersionInfo::decode(std::string_view bytes) {
    const auto json = nlohmann::json::parse(bytes, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto member = json.find("minVersion");
    if (member == json.end() || !member->is_string()) return std::nullopt;
    return MinVersionInfo{member->get<std::string>()};
}

std::string MinVersionInfo::encoded() const { return nlohmann::json{{"minVersion", minVersion}}.dump(); }

}  // namespace kelvo
