#include "kelvo/VersionGate.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

#include "app/CompositeStore.h"
#include "kelvo/Config.h"
#include "app/ICloudStore.h"
#include "app/KeychainStore.h"
#include "app/MinVersionInfo.h"
#include "kelvo/platform/HttpClient.h"

namespace kelvo {
namespace {

// A piece that is not wholly an optional sign and decimal digits, within range, counts 0.
std::int64_t pieceValue(std::string_view piece) {
    const bool hasSign = piece.starts_with('+') || piece.starts_with('-');
    const auto digits = piece.substr(hasSign ? 1 : 0);
    if (digits.empty() || !std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; })) return 0;
    if (piece.starts_with('+')) piece.remove_prefix(1);  // from_chars takes a minus only
    std::int64_t value = 0;
    if (std::from_chars(piece.data(), piece.data() + piece.size(), value).ec != std::errc()) return 0;
    return value;
}

std::vector<std::int64_t> numbersOf(std::string_view version) {
    std::vector<std::int64_t> numbers;
    while (!version.empty()) {
        const auto dot = version.find('.');
        const auto piece = version.substr(0, dot);
        if (!piece.empty()) numbers.push_back(pieceValue(piece));
        if (dot == std::string_view::npos) break;
        version.remove_prefix(dot + 1);
    }
    return numbers;
}

}  // namespace

VersionGate::VersionGate(std::string currentVersion, std::shared_ptr<KeyValueStore> store, VersionFetch fetch)
    : currentVersion(std::move(currentVersion)),
      fetch(fetch ? std::move(fetch) : download(documentURL())),
      store(store ? std::move(store) : liveStore()) {}

VersionStatus VersionGate::check() const {
    const std::string key(cacheKey);
    std::optional<std::string> minimum;
    if (const auto data = fetch()) {
        if (const auto info = MinVersionInfo::decode(*data)) {
            store->set(info->minVersion, key);
            minimum = info->minVersion;
        }
    }
    if (!minimum) minimum = store->string(key);
    if (!minimum) return VersionStatus::ok;
    return isOlder(currentVersion, *minimum) ? VersionStatus::mustUpdate : VersionStatus::ok;
}

bool VersionGate::isOlder(std::string_view current, std::string_view minimum) {
    const auto ours = numbersOf(current);
    const auto least = numbersOf(minimum);
    for (std::size_t position = 0; position < std::max(ours.size(), least.size()); ++position) {
        const std::int64_t mine = position < ours.size() ? ours[position] : 0;
        const std::int64_t theirs = position < least.size() ? least[position] : 0;
        if (mine != theirs) return mine < theirs;
    }
    return false;
}

std::string VersionGate::documentURL() { return KELVO_MIN_VERSION_URL; }

bool VersionGate::enabledFor(const Config& config) { return KELVO_MIN_VERSION_CHECK && config.checkMinimumVersion; }

VersionFetch VersionGate::download(std::string url) {
    return [url = std::move(url)] { return platform::httpGet(url); };
}

std::shared_ptr<KeyValueStore> VersionGate::liveStore() {
    return std::make_shared<CompositeStore>(std::vector<std::shared_ptr<KeyValueStore>>{
        std::make_shared<KeychainStore>(std::string(KelvoKit::applicationID())),
        std::make_shared<ICloudStore>(),
    });
}

}  // namespace kelvo
