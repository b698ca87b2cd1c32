#include "kelvo/L10n.h"

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "kelvo/LocalFiles.h"
#include "kelvo/platform/FileSystem.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {
namespace {

constexpr const char* bundleName = "Kelvo_KelvoKit.bundle";
constexpr std::size_t maximumPositionDigits = 2;

struct Placeholder {
    std::size_t begin = 0;
    std::size_t end = 0;      // one past the conversion character
    char kind = 0;            // 's', 'd' or '%'
    std::size_t position = 0; // explicit 1-based argument position, 0 when implicit
};

// Finds the next "%..." directive at or after `from`; a '%' not followed by a known
// directive is literal text.
std::optional<Placeholder> nextPlaceholder(std::string_view format, std::size_t from) {
    for (std::size_t i = format.find('%', from); i != std::string_view::npos; i = format.find('%', i + 1)) {
        std::size_t j = i + 1;
        std::size_t position = 0;
        std::size_t digitsEnd = j;
        while (digitsEnd < format.size() && format[digitsEnd] >= '0' && format[digitsEnd] <= '9') ++digitsEnd;
        if (digitsEnd > j && digitsEnd < format.size() && format[digitsEnd] == '$') {
            // Positions count from 1; an absurd one ("%0$s", "%99999$s") is literal text
            // rather than a huge argument index.
            if (digitsEnd - j > maximumPositionDigits) continue;
            for (std::size_t k = j; k < digitsEnd; ++k) position = position * 10 + static_cast<std::size_t>(format[k] - '0');
            if (position == 0) continue;
            j = digitsEnd + 1;
        }
        if (j >= format.size()) return std::nullopt;
        const char kind = format[j];
        if (kind == 's' || kind == 'd' || (kind == '%' && position == 0)) return Placeholder{i, j + 1, kind, position};
    }
    return std::nullopt;
}

std::string renderArgument(char kind, const FormatArgument* argument) {
    if (!argument) return "";
    if (kind == 's') {
        if (const auto* text = std::get_if<std::string>(argument)) return *text;
        return "";
    }
    if (const auto* number = std::get_if<std::int64_t>(argument)) return std::to_string(*number);
    return "";
}

}  // namespace

std::optional<ResourceBundle> L10n::loadBundle(const std::filesystem::path& location) {
    const auto entries = platform::listDirectory(location, true);
    if (!entries) return std::nullopt;
    ResourceBundle bundle{location, {}};
    for (const auto& entry : *entries) {
        const std::filesystem::path name = entry.name;
        if (name.extension() != ".json") continue;
        const auto text = platform::readFile(location / name);
        if (!text) return std::nullopt;
        const auto json = nlohmann::json::parse(*text, nullptr, false);
        if (!json.is_object()) return std::nullopt;
        Catalog catalog{name.stem().string(), {}};
        for (const auto& [key, value] : json.items())
            if (value.is_string()) catalog.texts.emplace(key, value.get<std::string>());
        bundle.catalogs.emplace(catalog.language, std::move(catalog));
    }
    if (bundle.catalogs.empty()) return std::nullopt;
    return bundle;
}

ResourceBundle L10n::loadBundleOrExit(std::string_view name, const std::filesystem::path& fallback) {
    const auto first = LocalFiles::besideExecutable(name);
    if (auto bundle = loadBundle(first)) return std::move(*bundle);
    const auto installed = LocalFiles::installedData(name);
    if (auto bundle = loadBundle(installed)) return std::move(*bundle);
    if (auto bundle = loadBundle(fallback)) return std::move(*bundle);
    std::fprintf(stderr, "could not load resource bundle: from %s, %s or %s\n", first.c_str(), installed.c_str(),
                 fallback.c_str());
    std::exit(1);
}

const ResourceBundle& L10n::bundle() {
    static const ResourceBundle loaded = loadBundleOrExit(bundleName, KELVO_FALLBACK_BUNDLE_PATH);
    return loaded;
}

std::string L10n::languageAmong(const ResourceBundle& bundle) {
    const auto language = platform::preferredLanguage();
    return language && bundle.catalogs.contains(*language) ? *language : "en";
}

std::string L10n::currentLanguage() { return languageAmong(bundle()); }

namespace {

const std::string* lookUp(std::string_view key) {
    static const std::string language = L10n::currentLanguage();
    const auto& catalogs = L10n::bundle().catalogs;
    const auto catalog = catalogs.find(language);
    if (catalog == catalogs.end()) return nullptr;
    const auto text = catalog->second.texts.find(key);
    return text == catalog->second.texts.end() ? nullptr : &text->second;
}

}  // namespace

std::string L10n::t(std::string_view key) {
    const auto* text = lookUp(key);
    return text ? *text : std::string(key);
}

std::string L10n::plural(std::string_view key, std::int64_t count, const std::vector<FormatArgument>& arguments) {
    if (count == 1)
        if (const auto* singular = lookUp(std::string(key) + ".one")) return formatText(*singular, arguments);
    return t(key, arguments);
}

std::string L10n::t(std::string_view key, const std::vector<FormatArgument>& arguments) {
    return formatText(t(key), arguments);
}

std::string L10n::placeholderSignature(std::string_view format) {
    std::string byPosition;
    std::size_t implicitIndex = 0;
    for (auto placeholder = nextPlaceholder(format, 0); placeholder;
         placeholder = nextPlaceholder(format, placeholder->end)) {
        if (placeholder->kind == '%') continue;
        const std::size_t index = placeholder->position ? placeholder->position - 1 : implicitIndex++;
        if (byPosition.size() <= index) byPosition.resize(index + 1, '?');
        byPosition[index] = placeholder->kind;
    }
    return byPosition;
}

std::string L10n::formatText(std::string_view format, const std::vector<FormatArgument>& arguments) {
    std::string out;
    std::size_t copied = 0;
    std::size_t implicitIndex = 0;
    for (auto placeholder = nextPlaceholder(format, 0); placeholder;
         placeholder = nextPlaceholder(format, placeholder->end)) {
        out.append(format.substr(copied, placeholder->begin - copied));
        copied = placeholder->end;
        if (placeholder->kind == '%') {
            out += '%';
            continue;
        }
        const std::size_t index = placeholder->position ? placeholder->position - 1 : implicitIndex++;
        out += renderArgument(placeholder->kind, index < arguments.size() ? &arguments[index] : nullptr);
    }
    out.append(format.substr(copied));
    return out;
}

}  // namespace kelvo
