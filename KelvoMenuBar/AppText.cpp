#include "AppText.h"

#include <cstdio>
#include <cstdlib>

#include "kelvo/platform/UserSession.h"

namespace kelvo::app {

const ResourceBundle& AppText::bundle() {
    static const ResourceBundle loaded = [] {
        const auto directory = platform::executableDirectory();
        const auto first = (directory ? *directory : std::filesystem::path(".")) / "Kelvo_KelvoMenuBar.bundle";
        const std::filesystem::path second = KELVO_APP_FALLBACK_BUNDLE_PATH;
        if (auto bundle = L10n::loadBundle(first)) return std::move(*bundle);
        if (auto bundle = L10n::loadBundle(second)) return std::move(*bundle);
        std::fprintf(stderr, "could not load resource bundle: from %s or %s\n", first.c_str(), second.c_str());
        std::exit(1);
    }();
    return loaded;
}

QString AppText::t(std::string_view key, const std::vector<FormatArgument>& arguments) {
    static const Catalog* const catalog = [] {
        const auto& catalogs = bundle().catalogs;
        const auto language = platform::preferredLanguage();
        auto found = language ? catalogs.find(*language) : catalogs.end();
        if (found == catalogs.end()) found = catalogs.find("en");
        return found == catalogs.end() ? nullptr : &found->second;
    }();
    if (!catalog) return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    const auto text = catalog->texts.find(key);
    const std::string format = text == catalog->texts.end() ? std::string(key) : text->second;
    return QString::fromStdString(L10n::formatText(format, arguments));
}

}  // namespace kelvo::app
