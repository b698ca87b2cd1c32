#include "AppText.h"

namespace kelvo::app {

const ResourceBundle& AppText::bundle() {
    static const ResourceBundle loaded = L10n::loadBundleOrExit("Kelvo_KelvoMenuBar.bundle", KELVO_APP_FALLBACK_BUNDLE_PATH);
    return loaded;
}

namespace {

const Catalog* catalog() {
    static const Catalog* const chosen = [] {
        const auto& catalogs = AppText::bundle().catalogs;
        const auto found = catalogs.find(L10n::languageAmong(AppText::bundle()));
        return found == catalogs.end() ? nullptr : &found->second;
    }();
    return chosen;
}

}  // namespace

QString AppText::plural(std::string_view key, std::int64_t count, const std::vector<FormatArgument>& arguments) {
    const std::string singular = std::string(key) + ".one";
    if (count == 1 && catalog() && catalog()->texts.find(singular) != catalog()->texts.end()) return t(singular, arguments);
    return t(key, arguments);
}

QString AppText::t(std::string_view key, const std::vector<FormatArgument>& arguments) {
    const Catalog* catalog = kelvo::app::catalog();
    if (!catalog) return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    const auto text = catalog->texts.find(key);
    const std::string format = text == catalog->texts.end() ? std::string(key) : text->second;
    return QString::fromStdString(L10n::formatText(format, arguments));
}

}  // namespace kelvo::app
