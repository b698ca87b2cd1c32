#include "AppText.h"

namespace kelvo::app {

const ResourceBundle& AppText::bundle() {
    static const ResourceBundle loaded = L10n::loadBundleOrExit("Kelvo_KelvoMenuBar.bundle", KELVO_APP_FALLBACK_BUNDLE_PATH);
    return loaded;
}

QString AppText::t(std::string_view key, const std::vector<FormatArgument>& arguments) {
    static const Catalog* const catalog = [] {
        const auto& catalogs = bundle().catalogs;
        const auto found = catalogs.find(L10n::languageAmong(bundle()));
        return found == catalogs.end() ? nullptr : &found->second;
    }();
    if (!catalog) return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    const auto text = catalog->texts.find(key);
    const std::string format = text == catalog->texts.end() ? std::string(key) : text->second;
    return QString::fromStdString(L10n::formatText(format, arguments));
}

}  // namespace kelvo::app
