#include "kelvo/Paths.h"

namespace kelvo {

std::filesystem::path Paths::standardized(const std::filesystem::path& path) {
    if (path.empty()) return path;
    std::string text = path.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

bool Paths::isInside(const std::string& path, const std::string& root) {
    if (root == "/") return path.size() > 1 && path.front() == '/';
    return path.size() > root.size() + 1 && path.compare(0, root.size(), root) == 0 && path[root.size()] == '/';
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
