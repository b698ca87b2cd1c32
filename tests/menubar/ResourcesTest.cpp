// The application's texts and icons: both catalogs complete with the English
// placeholders, and no symbol the screens draw without an icon of the theme.
#include <gtest/gtest.h>

#include <QIcon>

#include "AppText.h"
#include "Icons.h"
#include "kelvo/Family.h"

namespace kelvo::app {
namespace {

TEST(AppCatalogs, EveryKeyIsInEveryCatalogWithTheEnglishPlaceholders) {
    const auto& catalogs = AppText::bundle().catalogs;
    ASSERT_TRUE(catalogs.contains("en"));
    ASSERT_TRUE(catalogs.contains("es"));
    const auto& english = catalogs.at("en").texts;
    for (const auto& [language, catalog] : catalogs) {
        EXPECT_EQ(catalog.texts.size(), english.size()) << language;
        for (const auto& [key, text] : catalog.texts) {
            EXPECT_FALSE(text.empty()) << language << ": " << key;
            const auto source = english.find(key);
            ASSERT_NE(source, english.end()) << key << " is in " << language << " but not in English";
            EXPECT_EQ(L10n::placeholderSignature(text), L10n::placeholderSignature(source->second)) << language << ": " << key;
        }
    }
}

TEST(AppIcons, EverySymbolDrawsAThemeIcon) {
    for (const auto symbol : Icons::allSymbols()) {
        const QIcon icon = Icons::symbol(symbol);
        EXPECT_FALSE(icon.pixmap(16, 16).isNull()) << symbol << " as " << Icons::themeName(symbol);
    }
    for (Family family : allFamilies())
        EXPECT_NE(Icons::themeName(iconName(family)), Icons::themeName("no.such.symbol")) << iconName(family);
}

}  // namespace
}  // namespace kelvo::app
