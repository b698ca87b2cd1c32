#include "vocabulary/Paths.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>

#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UTF8.h"

namespace kelvo {
namespace {

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

const utf8proc_uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const utf8proc_uint8_t*>(text.data());
}

// Appends the NFC form of a run of valid UTF-8 (the run as it is if it cannot be composed).
void appendComposed(std::string& out, std::string_view run) {
    if (isASCII(run)) {
        out.append(run);
        return;
    }
    utf8proc_uint8_t* composed = nullptr;
    const auto length = utf8proc_map(bytesOf(run), static_cast<utf8proc_ssize_t>(run.size()), &composed,
                                     static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    if (length >= 0) out.append(reinterpret_cast<const char*>(composed), static_cast<std::size_t>(length));
    else out.append(run);
    std::free(composed);
}

}  // namespace

std::filesystem::path Paths::standardized(const std::filesystem::path& path) { return platform::standardized(path); }

std::string Paths::comparable(std::string_view path) {
    if (isASCII(path)) return std::string(path);
    std::string out;
    out.reserve(path.size());
    std::size_t runStart = 0;
    std::size_t index = 0;
    while (index < path.size()) {
        if (const auto decoded = platform::decodeUTF8(path, index)) {
            index += decoded->length;
            continue;
        }
        appendComposed(out, path.substr(runStart, index - runStart));
        out.push_back(path[index]);
        runStart = ++index;
    }
    appendComposed(out, path.substr(runStart));
    return out;
}

bool Paths::same(std::string_view path, std::string_view other) {
    return path == other || comparable(path) == comparable(other);
}

bool Paths::isInside(std::string_view path, std::string_view root) {
    if (root.empty() || root == "/") return false;
    const std::string inner = comparable(path);
    const std::string outer = comparable(root);
    return inner.size() > outer.size() + 1 && inner.starts_with(outer) && inner[outer.size()] == '/';
}

std::filesystem::path Paths::appending(const std::filesystem::path& base, const std::string& relative) {
    std::string text = base.string();
    if (text.empty()) return relative;
    if (text.back() != '/') text += '/';
    return text + relative;
}

std::string Paths::lastComponent(const std::filesystem::path& path) {
    return standardized(path).filename().string();
}

std::string Paths::extensionOf(const std::filesystem::path& path) {
    const std::string name = lastComponent(path);
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return "";
    return name.substr(dot + 1);
}

}  // namespace kelvo
