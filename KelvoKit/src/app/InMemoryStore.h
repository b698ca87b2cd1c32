#pragma once
// A key/value store in process memory, shared by reference; every access holds one lock.
#include <map>
#include <mutex>

#include "kelvo/KeyValueStore.h"

namespace kelvo {

class InMemoryStore final : public KeyValueStore {
public:
    explicit InMemoryStore(std::map<std::string, std::string> initial = {});
    std::optional<std::string> string(const std::string& key) const override;
    void set(const std::optional<std::string>& value, const std::string& key) override;

private:
    mutable std::mutex lock_;
    std::map<std::string, std::string> dict_;
};

}  // namespace kelvo
