#pragma once
// A key/value store in the user's credential store (the desktop's Secret Service): one
// item per key, found by the attributes service = `service` and account = the key.
// Writing deletes every item of the key, then adds one. A missing item, a locked keyring,
// a machine without a session bus or a value that is not UTF-8 all read as nothing, at
// once when there is no bus; writes that the keyring refuses are lost silently.
#include <string>

#include "kelvo/KeyValueStore.h"

namespace kelvo {

class KeychainStore final : public KeyValueStore {
public:
    explicit KeychainStore(std::string service);
    std::optional<std::string> string(const std::string& key) const override;
    void set(const std::optional<std::string>& value, const std::string& key) override;

    const std::string& service() const { return service_; }

private:
    std::string service_;
};

}  // namespace kelvo
