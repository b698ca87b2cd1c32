#pragma once
// Whether the running version may go on: the gate downloads the published minimum-version
// document, compares the running version with it and keeps the minimum in a store, so a
// user who is offline is still held to the last minimum seen. A download that fails or a
// document that does not decode leaves the answer to that cached minimum (and neither
// replaces nor clears it); with nothing cached the answer is ok. No retry, no expiry:
// every check downloads anew. Immutable, usable from any thread; the store is shared.
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kelvo/KelvoKit.h"
#include "kelvo/KeyValueStore.h"
#include "kelvo/VersionStatus.h"

namespace kelvo {

// Downloads the document: its bytes, or nothing when it cannot. Callable from any thread.
using VersionFetch = std::function<std::optional<std::string>()>;

struct VersionGate {
    std::string currentVersion;
    VersionFetch fetch;
    std::shared_ptr<KeyValueStore> store;

    // Left out (or null), each dependency is the live one: the build's version, the
    // credential store followed by the per-user file store, and the download of the
    // build's document address.
    explicit VersionGate(std::string currentVersion = std::string(KelvoKit::version()),
                         std::shared_ptr<KeyValueStore> store = nullptr, VersionFetch fetch = nullptr);

    // Blocks for the download: call it off the user-interface thread.
    VersionStatus check() const;

    // Dotted versions compared number by number: empty pieces are dropped, a missing
    // piece counts 0, and a piece that is not wholly a signed 64-bit decimal counts 0
    // ("2-beta", "beta"; "007" is 7). Equal versions are not older.
    static bool isOlder(std::string_view current, std::string_view minimum);

    // Whether the live application checks at all: not when the build left the check out
    // (KELVO_MIN_VERSION_CHECK=OFF), nor when the configuration turns it off.
    static bool enabledFor(const struct Config& config);

    static constexpr std::string_view cacheKey = "minVersionCached";
    // The build's address of the document (its path is /min-version.json).
    static std::string documentURL();
    // A fetch of one address over HTTP(S): any response's body, or nothing on a transport failure.
    static VersionFetch download(std::string url);
    // The credential store under the application's identifier, then the per-user file store.
    static std::shared_ptr<KeyValueStore> liveStore();
};

}  // namespace kelvo
