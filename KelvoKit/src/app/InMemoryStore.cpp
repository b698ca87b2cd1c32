#include "app/InMemoryStore.h"

namespace kelvo {

InMemoryStore::InMemoryStore(std::map<std::string, std::string> initial) : dict_(std::move(initial)) {}

std::optional<std::string> InMemoryStore::string(const std::string& key) const {
    const std::lock_guard hold(lock_);
    const auto found = dict_.find(key);
    if (found == dict_.end()) return std::nullopt;
    return found->second;
}

void InMemoryStore::set(const std::optional<std::string>& value, const std::string& key) {
    const std::lock_guard hold(lock_);
    if (value) dict_.insert_or_assign(key, *value);
    else dict_.erase(key);
}

}  // namespace kelvo
