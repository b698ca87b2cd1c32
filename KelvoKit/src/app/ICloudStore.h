#pragma once
// The per-user key/value store that lasts across runs: one JSON object of text values in
// "store.json" inside a folder of the user's state home ($XDG_STATE_HOME/kelvo, by
// default ~/.local/state/kelvo). It is what keeps the last minimum version seen when the
// machine has no keyring.
//
// A write locks the folder against writers in other processes, reads the file afresh,
// changes the one key and replaces the file atomically, so concurrent writers of
// different keys keep each other's values and a reader never sees half a file. A file
// that is missing, unreadable or not a JSON object reads as empty (and the next write
// replaces it); members that are not text are ignored.
#include <filesystem>
#include <map>

#include "kelvo/KeyValueStore.h"

namespace kelvo {

class ICloudStore final : public KeyValueStore {
public:
    // The running user's store; with no home to keep it in, one that keeps nothing.
    ICloudStore();
    explicit ICloudStore(std::filesystem::path directory);
    std::optional<std::string> string(const std::string& key) const override;
    void set(const std::optional<std::string>& value, const std::string& key) override;

    const std::filesystem::path& directory() const { return directory_; }
    std::filesystem::path file() const { return directory_ / "store.json"; }

private:
    std::map<std::string, std::string> load() const;
    std::filesystem::path directory_;
};

}  // namespace kelvo
