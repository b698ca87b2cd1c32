#include <gtest/gtest.h>

#include "kelvo/L10n.h"
#include "support/ScopedEnvironment.h"

namespace kelvo {
namespace {

TEST(L10nCatalogs, EveryKeyIsInEveryCatalogWithTheEnglishPlaceholdersAndEverySingularWithItsGeneralFormsOnes) {
    const auto bundle = L10n::loadBundle(KELVO_BUNDLE_SOURCE_PATH);
    ASSERT_TRUE(bundle.has_value()) << "cannot load " << KELVO_BUNDLE_SOURCE_PATH;
    ASSERT_TRUE(bundle->catalogs.contains("en"));
    ASSERT_GE(bundle->catalogs.size(), 2u);
    const auto& english = bundle->catalogs.at("en").texts;
    EXPECT_TRUE(english.contains("cleaner.note.partialSize"));
    std::size_t singulars = 0;
    for (const auto& [language, catalog] : bundle->catalogs) {
        for (const auto& [otherLanguage, other] : bundle->catalogs)
            for (const auto& [key, text] : catalog.texts)
                EXPECT_TRUE(other.texts.contains(key)) << key << " is in " << language << " but not in " << otherLanguage;
        for (const auto& [key, text] : catalog.texts) {
            EXPECT_FALSE(text.empty()) << language << ": " << key;
            const auto source = english.find(key);
            if (source == english.end()) continue;  // reported above
            EXPECT_EQ(L10n::placeholderSignature(text), L10n::placeholderSignature(source->second))
                << language << ": " << key << " = \"" << text << "\"";
            if (!key.ends_with(".one")) continue;
            // "prepare.summary.willUninstall.one" stands on its own, without a general form.
            const auto general = catalog.texts.find(key.substr(0, key.size() - 4));
            if (general == catalog.texts.end()) continue;
            ++singulars;
            EXPECT_EQ(L10n::placeholderSignature(text), L10n::placeholderSignature(general->second)) << language << ": " << key;
        }
    }
    EXPECT_GT(singulars, 0u);
}

TEST(L10nLookup, PluralChoosesTheSingularForOneOnlyAndAMissingKeyShowsTheKey) {
    const std::string key = "prepare.summary.leftovers";
    EXPECT_NE(L10n::t(key + ".one", std::int64_t{1}), L10n::t(key, std::int64_t{1}));
    EXPECT_EQ(L10n::plural(key, 1, std::int64_t{1}), L10n::t(key + ".one", std::int64_t{1}));
    for (const std::int64_t count : {0, 2, -1, 21})
        EXPECT_EQ(L10n::plural(key, count, count), L10n::t(key, count)) << count;
    // A text without a singular form is used for every count.
    EXPECT_EQ(L10n::plural("cli.report.deleted", 1, std::int64_t{1}), L10n::t("cli.report.deleted", std::int64_t{1}));
    EXPECT_EQ(L10n::t("no.such.key"), "no.such.key");
    EXPECT_EQ(L10n::t("no.such.key", std::string("argument")), "no.such.key");
    const std::string filled = L10n::t("scan.note.andMore", std::string("x"), std::int64_t{127});
    EXPECT_NE(filled.find("127"), std::string::npos) << filled;
    EXPECT_EQ(filled.find('%'), std::string::npos) << filled;
}

TEST(L10nFormat, FillsTypedAndPositionalPlaceholdersAndSignsThemByPosition) {
    using L10n::formatText;
    EXPECT_EQ(formatText("%s has %d items", {std::string("cache"), std::int64_t{3}}), "cache has 3 items");
    EXPECT_EQ(formatText("100%% of %s", {std::string("it")}), "100% of it");
    EXPECT_EQ(formatText("%2$s before %1$s", {std::string("b"), std::string("a")}), "a before b");
    EXPECT_EQ(formatText("%d", {std::int64_t{-42}}), "-42");
    // Wrong types and missing arguments render as nothing rather than garbage.
    EXPECT_EQ(formatText("[%d][%s]", {std::string("text")}), "[][]");
    // What is not a directive stays literal text.
    EXPECT_EQ(formatText("50% off, %0$s, %x, %", {std::string("unused")}), "50% off, %0$s, %x, %");
    EXPECT_EQ(L10n::placeholderSignature("%s (%d)"), "sd");
    EXPECT_EQ(L10n::placeholderSignature("%2$d then %1$s"), "sd");
    EXPECT_EQ(L10n::placeholderSignature("100%% done"), "");
    EXPECT_NE(L10n::placeholderSignature("%d (%s)"), L10n::placeholderSignature("%s (%d)"));
}

TEST(L10nLanguage, TheFirstNonEmptyVariableNamesTheLanguageOrEnglish) {
    using Values = testing::ScopedEnvironment::Values;
    const std::vector<std::pair<Values, std::string>> cases{
        {{}, "en"},
        {{{"LANG", "es_ES.UTF-8"}}, "es"},
        {{{"LANG", "es_ES.UTF-8"}, {"LC_MESSAGES", "en_GB"}}, "en"},
        {{{"LANG", "en"}, {"LC_MESSAGES", "en_GB"}, {"LC_ALL", "es"}}, "es"},
        {{{"LANG", "es"}, {"LC_ALL", ""}}, "es"},  // empty counts as unset
        {{{"LANG", "C.UTF-8"}}, "en"},
        {{{"LANG", "pt_BR.UTF-8"}}, "en"},  // no catalog of its own
    };
    for (const auto& [values, language] : cases) {
        Values all{{"LC_ALL", std::nullopt}, {"LC_MESSAGES", std::nullopt}, {"LANG", std::nullopt}};
        for (const auto& [name, value] : values) all[name] = value;
        const testing::ScopedEnvironment variables(all);
        EXPECT_EQ(L10n::currentLanguage(), language) << ::testing::PrintToString(values);
    }
}

}  // namespace
}  // namespace kelvo
