#include "app/KeychainStore.h"

#include "kelvo/platform/SecretService.h"

namespace kelvo {

KeychainStore::KeychainStore(std::string service) : service_(std::move(service)) {}

std::optional<std::string> KeychainStore::string(const std::string& key) const {
    return platform::findSecret(service_, key);
}

void KeychainStore::set(const std::optional<std::string>& value, const std::string& key) {
    platform::removeSecrets(service_, key);
    if (value) platform::addSecret(service_, key, service_ + " " + key, *value);
}

}  // namespace kelvo
