#include "app/ICloudStore.h"

#include <nlohmann/json.hpp>

#include "vocabulary/JsonLayout.h"
#include "kelvo/platform/DirectoryLock.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {

// With no home to keep it in, the store keeps nothing (an empty folder name).
ICloudStore::ICloudStore() {
    if (auto state = platform::stateHome()) directory_ = *state / "kelvo";
}

ICloudStore::ICloudStore(std::filesystem::path directory) : directory_(std::move(directory)) {}

std::map<std::string, std::string> ICloudStore::load() const {
    std::map<std::string, std::string> values;
    if (directory_.empty()) return values;
    const auto text = platform::readFile(file());
    if (!text) return values;
    const auto json = nlohmann::json::parse(*text, nullptr, false);
    if (!json.is_object()) return values;
    for (const auto& [key, value] : json.items())
        if (value.is_string()) values.emplace(key, value.get<std::string>());
    return values;
}

std::optional<std::string> ICloudStore::string(const std::string& key) const {
    // No lock: files are only ever replaced whole, so any read sees one complete version.
    auto values = load();
    const auto found = values.find(key);
    if (found == values.end()) return std::nullopt;
    return std::move(found->second);
}

void ICloudStore::set(const std::optional<std::string>& value, const std::string& key) {
    if (directory_.empty() || platform::createDirectories(directory_)) return;
    const platform::DirectoryLock lock(directory_);
    if (!lock.held()) return;
    auto values = load();
    if (value) values.insert_or_assign(key, *value);
    else values.erase(key);
    platform::writeFileAtomically(file(), JsonLayout::pretty(nlohmann::json(values)));
}

}  // namespace kelvo
