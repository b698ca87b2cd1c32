#pragma once
// Several stores seen as one: a read answers from the first store, in list order, that
// has the key, and copies the value into every store that lacks it (so a value that only
// the file store kept reaches the keyring on the next read, and the reverse); a write
// goes to every store. No lock of its own: a copying read may interleave with a write.
#include <memory>
#include <vector>

#include "kelvo/KeyValueStore.h"

namespace kelvo {

class CompositeStore final : public KeyValueStore {
public:
    explicit CompositeStore(std::vector<std::shared_ptr<KeyValueStore>> stores);
    std::optional<std::string> string(const std::string& key) const override;
    void set(const std::optional<std::string>& value, const std::string& key) override;

    const std::vector<std::shared_ptr<KeyValueStore>>& stores() const { return stores_; }

private:
    std::vector<std::shared_ptr<KeyValueStore>> stores_;
};

}  // namespace kelvo
