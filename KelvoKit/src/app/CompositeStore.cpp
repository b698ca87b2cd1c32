#include "app/CompositeStore.h"

namespace kelvo {

CompositeStore::CompositeStore(std::vector<std::shared_ptr<KeyValueStore>> stores) : stores_(std::move(stores)) {}

std::optional<std::string> CompositeStore::string(const std::string& key) const {
    std::optional<std::string> found;
    for (const auto& store : stores_) {
        found = store->string(key);
        if (found) break;
    }
    if (!found) return std::nullopt;
    for (const auto& store : stores_)
        if (!store->string(key)) store->set(found, key);
    return found;
}

void CompositeStore::set(const std::optional<std::string>& value, const std::string& key) {
    for (const auto& store : stores_) store->set(value, key);
}

}  // namespace kelvo
