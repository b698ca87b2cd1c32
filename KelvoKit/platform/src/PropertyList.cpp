#include "kelvo/platform/PropertyList.h"

#include <plist/plist.h>

#include <limits>
#include <memory>

#include "kelvo/platform/FileSystem.h"

namespace kelvo::platform {

std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::string& bytes) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<uint32_t>::max()) return std::nullopt;
    plist_t root = nullptr;
    // libplist tells the binary and XML encodings apart by their first bytes.
    if (plist_is_binary(bytes.data(), static_cast<uint32_t>(bytes.size())))
        plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
    else
        plist_from_xml(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
    if (!root) return std::nullopt;
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, &plist_free);
    if (plist_get_node_type(root) != PLIST_DICT) return std::nullopt;

    std::map<std::string, std::string> strings;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(root, &iterator);
    while (iterator) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root, iterator, &key, &value);
        if (!key) break;
        if (value && plist_get_node_type(value) == PLIST_STRING) {
            char* text = nullptr;
            plist_get_string_val(value, &text);
            if (text) strings.emplace(key, text);
            std::free(text);
        }
        std::free(key);
    }
    std::free(iterator);
    return strings;
}

std::optional<std::map<std::string, std::string>> readTopLevelStrings(const std::filesystem::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) return std::nullopt;
    return readTopLevelStrings(*bytes);
}

}  // namespace kelvo::platform
