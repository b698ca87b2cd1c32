// The panel's rules as functions: screen order, disk tone, result line, risk text, placement.
// The action title and the order of the groups are checked on the panel itself.
#include <gtest/gtest.h>

#include <QIcon>
#include <QStringList>

#include "AppText.h"
#include "Icons.h"
#include "desktop/TrayPlacement.h"
#include "kelvo/Family.h"
#include "panel/PanelRules.h"

namespace kelvo::app {
namespace {

TEST(PanelRules, ScreenOrderIsUpdateThenSettingsThenOnboardingThenMain) {
    const struct { bool update, settings, needsOnboarding, dismissed; Screen expected; } rows[] = {
        {true, true, true, false, Screen::updateRequired}, {false, true, true, false, Screen::settings},
        {false, false, true, false, Screen::onboarding},   {false, false, true, true, Screen::main},
        {false, false, false, false, Screen::main},
    };
    for (const auto& row : rows)
        EXPECT_EQ(chooseScreen(row.update, row.settings, row.needsOnboarding, row.dismissed), row.expected)
            << row.update << row.settings << row.needsOnboarding << row.dismissed;
}

TEST(PanelRules, DiskToneByUsedFraction) {
    const struct { DiskSpace disk; Tone expected; } rows[] = {
        {{100, 5}, Tone::red},    {{100, 10}, Tone::red},     {{100, 11}, Tone::orange}, {{100, 20}, Tone::orange},
        {{100, 25}, Tone::accent}, {{100, 50}, Tone::accent}, {{0, 0}, Tone::accent},   {{-1, 0}, Tone::accent},
    };
    for (const auto& row : rows) EXPECT_EQ(diskTone(row.disk), row.expected) << row.disk.totalBytes << " " << row.disk.freeBytes;
}

TEST(PanelRules, ResultLineAddsPartialAndSkippedCountsOnlyWhenThere) {
    ExecutionReport report{.freedBytes = 2048, .deleted = {"a"}, .errors = {{"e", {Reason::Code::exitStatus, "1"}}}};
    EXPECT_EQ(resultLine(report), "Freed 2.00 KB");
    report.partial = {"b", "c"};
    EXPECT_EQ(resultLine(report), "Freed 2.00 KB · 2 in part");
    report.skipped = {{"d", {Reason::Code::processRunning, "d"}}};
    EXPECT_EQ(resultLine(report), "Freed 2.00 KB · 2 in part · 1 skipped");
    report.trashedBytes = 1024;
    EXPECT_EQ(resultLine(report), "Freed 2.00 KB · 1.00 KB moved to the trash, freed only when it is emptied · 2 in part · 1 skipped");
}

TEST(PanelRules, RiskTextWrapsTheLevelWhenDataIsDownloadedAgain) {
    EXPECT_EQ(riskText({.regenCost = RegenCost::redownload, .level = Level::moderate}),
              "Moderate · downloaded again when needed");
    EXPECT_EQ(riskText({.regenCost = RegenCost::rebuild, .level = Level::aggressive}), "Aggressive");
}

TEST(PanelRules, RowTooltipListsUpToEightPathsThenHowManyMoreOrTheCommand) {
    CleanTarget target{.name = "Cache"};
    std::vector<std::filesystem::path> paths;
    QStringList lines{"Cache"};
    for (int count = 0; count <= 10; ++count) {  // nine show whole: a ninth path takes no more room than "and 1 more"
        target.kind = CleanKind::paths(paths);
        EXPECT_EQ(rowTooltip(target), count < 10 ? lines.join('\n') : lines.mid(0, 9).join('\n') + "\nand 2 more") << count;
        paths.push_back("/h/p" + std::to_string(count));
        lines.append(QString("/h/p%1").arg(count));
    }
    target.kind = CleanKind::command("brew cleanup");
    EXPECT_EQ(rowTooltip(target), "Cache\nRuns: brew cleanup");
}

TEST(TrayPlacement, UnderTheIconOrAtThePointerAndAlwaysOnScreen) {
    const struct { QRect icon; QPoint pointer; QPoint expected; } rows[] = {
        {{1000, 0, 24, 24}, {5, 5}, {801, 24}},        // centred under a top-panel icon
        {{1890, 0, 24, 24}, {5, 5}, {1500, 24}},       // pushed in from the right edge
        {{1000, 1056, 24, 24}, {5, 5}, {801, 496}},    // above an icon of a bottom panel
        {{}, {100, 100}, {0, 101}},                    // no icon place: at the pointer, kept on screen
        {{}, {1900, 1070}, {1500, 510}},
    };
    for (const auto& row : rows)  // a panel of 420x560 on a screen of 1920x1080
        EXPECT_EQ(panelPosition(row.icon, row.pointer, {0, 0, 1920, 1080}, {420, 560}), row.expected) << row.icon.x();
}

// The application's texts and icons: both catalogs complete with the English
// placeholders, and no symbol the screens draw without an icon of the theme.
TEST(AppCatalogs, EveryKeyIsInEveryCatalogWithTheEnglishPlaceholders) {
    const auto& catalogs = AppText::bundle().catalogs;
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
