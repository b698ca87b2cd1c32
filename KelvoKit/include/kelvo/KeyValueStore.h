#pragma once
// Text values by text key, where the minimum-version gate keeps the last minimum it saw.
// Failures are never reported: a value that could not be stored is simply absent on the
// next read. Implementations are safe to use from several threads.
#include <optional>
#include <string>

namespace kelvo {

class KeyValueStore {
public:
    virtual ~KeyValueStore();
    // The value under the key; nothing when there is none or it cannot be read.
    virtual std::optional<std::string> string(const std::string& key) const = 0;
    // Stores the value under the key, replacing any earlier one; nothing removes the key.
    virtual void set(const std::optional<std::string>& value, const std::string& key) = 0;
};

}  // namespace kelvo
