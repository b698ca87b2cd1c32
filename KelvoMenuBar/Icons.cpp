#include "Icons.h"

#include <QStandardPaths>
#include <algorithm>
#include <utility>

#include "kelvo/Family.h"

namespace kelvo::app {
namespace {

constexpr std::pair<std::string_view, std::string_view> themeNames[] = {
    {"trash", "user-trash-symbolic"},
    {"gearshape", "emblem-system-symbolic"},
    {"magnifyingglass", "system-search-symbolic"},
    {"hourglass", "content-loading-symbolic"},
    {"sparkles", "starred-symbolic"},
    {"wand.and.stars", "system-run-symbolic"},
    {"checkmark.square.fill", "checkbox-checked-symbolic"},
    {"square", "checkbox-symbolic"},
    {"checkmark.circle.fill", "emblem-ok-symbolic"},
    {"arrow.down.circle.fill", "software-update-available-symbolic"},
    {"minus.circle.fill", "list-remove-symbolic"},
    {"xmark.circle.fill", "window-close-symbolic"},
    {"folder", "folder-symbolic"},
    {"lock", "changes-prevent-symbolic"},
    {"terminal", "utilities-terminal-symbolic"},
    {"hammer", "applications-engineering-symbolic"},
    {"iphone", "phone-symbolic"},
    {"shippingbox", "package-x-generic-symbolic"},
    {"shippingbox.fill", "network-server-symbolic"},
    {"bird", "emoji-nature-symbolic"},
    {"cube", "emoji-objects-symbolic"},
    {"cube.box", "package-x-generic-symbolic"},
    {"cube.transparent", "applications-science-symbolic"},
    {"wrench.and.screwdriver", "preferences-other-symbolic"},
    {"internaldrive", "drive-harddisk-symbolic"},
    {"app.dashed", "view-app-grid-symbolic"},
    {"atom", "applications-science-symbolic"},
    {"globe", "web-browser-symbolic"},
    {"cup.and.saucer", "emoji-food-symbolic"},
    {"gamecontroller", "input-gaming-symbolic"},
    {"curlybraces", "text-x-generic-symbolic"},
    {"clock.arrow.circlepath", "document-open-recent-symbolic"},
};

}  // namespace

std::string_view Icons::themeName(std::string_view symbol) {
    for (const auto& [name, theme] : themeNames)
        if (name == symbol) return theme;
    return "application-x-executable-symbolic";
}

void Icons::useThemes() {
    QIcon::setThemeSearchPaths(QIcon::themeSearchPaths() +
                               QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, "icons",
                                                         QStandardPaths::LocateDirectory));
    QIcon::setFallbackThemeName(fallbackTheme);
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == "hicolor") QIcon::setThemeName(fallbackTheme);
}

QIcon Icons::symbol(std::string_view symbol) {
    const auto name = themeName(symbol);
    return QIcon::fromTheme(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
}

std::vector<std::string_view> Icons::allSymbols() {
    std::vector<std::string_view> symbols;
    for (const auto& [name, theme] : themeNames) symbols.push_back(name);
    for (Family family : allFamilies())
        if (std::find(symbols.begin(), symbols.end(), iconName(family)) == symbols.end()) symbols.push_back(iconName(family));
    return symbols;
}

}  // namespace kelvo::app
