#include <gtest/gtest.h>

#include <cstdlib>

#include "kelvo/L10n.h"
#include "kelvo/platform/UserSession.h"

namespace kelvo {
namespace {

TEST(L10nCatalogs, EveryKeyIsInEveryCatalogWithTheEnglishPlaceholders) {
    const auto bundle = L10n::loadBundle(KELVO_BUNDLE_SOURCE_PATH);
    ASSERT_TRUE(bundle.has_value()) << "cannot load " << KELVO_BUNDLE_SOURCE_PATH;
    ASSERT_TRUE(bundle->catalogs.contains("en"));
    ASSERT_GE(bundle->catalogs.size(), 2u);
    const auto& english = bundle->catalogs.at("en").texts;
    EXPECT_TRUE(english.contains("cleaner.note.partialSize"));
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
        }
    }
}

TEST(L10nCatalogs, EverySingularTakesTheArgumentsOfItsGeneralForm) {
    const auto bundle = L10n::loadBundle(KELVO_BUNDLE_SOURCE_PATH);
    ASSERT_TRUE(bundle.has_value());
    std::size_t pairs = 0;
    for (const auto& [language, catalog] : bundle->catalogs)
        for (const auto& [key, text] : catalog.texts) {
            if (!key.ends_with(".one")) continue;
            // "prepare.summary.willUninstall.one" stands on its own, without a general form.
            const auto general = catalog.texts.find(key.substr(0, key.size() - 4));
            if (general == catalog.texts.end()) continue;
            ++pairs;
            EXPECT_EQ(L10n::placeholderSignature(text), L10n::placeholderSignature(general->second)) << language << ": " << key;
        }
    EXPECT_GT(pairs, 0u);
}

TEST(L10nLookup, PluralChoosesTheSingularForOneOnly) {
    const std::string key = "prepare.summary.leftovers";
    EXPECT_NE(L10n::t(key + ".one", std::int64_t{1}), L10n::t(key, std::int64_t{1}));
    EXPECT_EQ(L10n::plural(key, 1, std::int64_t{1}), L10n::t(key + ".one", std::int64_t{1}));
    for (const std::int64_t count : {0, 2, -1, 21})
        EXPECT_EQ(L10n::plural(key, count, count), L10n::t(key, count)) << count;
    // A text without a singular form is used for every count.
    EXPECT_EQ(L10n::plural("cli.report.deleted", 1, std::int64_t{1}), L10n::t("cli.report.deleted", std::int64_t{1}));
}

TEST(L10nFormat, FillsTypedAndPositionalPlaceholders) {
    using L10n::formatText;
    EXPECT_EQ(formatText("%s has %d items", {std::string("cache"), std::int64_t{3}}), "cache has 3 items");
    EXPECT_EQ(formatText("100%% of %s", {std::string("it")}), "100% of it");
    EXPECT_EQ(formatText("%2$s before %1$s", {std::string("b"), std::string("a")}), "a before b");
    EXPECT_EQ(formatText("%d", {std::int64_t{-42}}), "-42");
    // Wrong types and missing arguments render as nothing rather than garbage.
    EXPECT_EQ(formatText("[%d][%s]", {std::string("text")}), "[][]");
    // What is not a directive stays literal text.
    EXPECT_EQ(formatText("50% off, %0$s, %x, %", {std::string("unused")}), "50% off, %0$s, %x, %");
}

TEST(L10nFormat, PlaceholderSignatureFollowsArgumentPositions) {
    EXPECT_EQ(L10n::placeholderSignature("%s (%d)"), "sd");
    EXPECT_EQ(L10n::placeholderSignature("%2$d then %1$s"), "sd");
    EXPECT_EQ(L10n::placeholderSignature("100%% done"), "");
    EXPECT_NE(L10n::placeholderSignature("%d (%s)"), L10n::placeholderSignature("%s (%d)"));
}

TEST(L10nLookup, AMissingKeyShowsTheKey) {
    EXPECT_EQ(L10n::t("no.such.key"), "no.such.key");
    EXPECT_EQ(L10n::t("no.such.key", std::string("argument")), "no.such.key");
    const std::string filled = L10n::t("exec.error.exitCode", std::int64_t{127});
    EXPECT_NE(filled.find("127"), std::string::npos) << filled;
    EXPECT_EQ(filled.find('%'), std::string::npos) << filled;
}

// Sets LC_ALL, LC_MESSAGES and LANG for one test and puts the earlier values back.
class L10nLanguage : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : names) {
            const char* value = std::getenv(name);
            saved.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
            ::unsetenv(name);
        }
    }
    void TearDown() override {
        for (const auto& [name, value] : saved) {
            if (value)
                ::setenv(name, value->c_str(), 1);
            else
                ::unsetenv(name);
        }
    }
    static void set(const char* name, const char* value) { ::setenv(name, value, 1); }

    static constexpr const char* names[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    std::vector<std::pair<const char*, std::optional<std::string>>> saved;
};

TEST_F(L10nLanguage, NothingSetMeansEnglish) {
    EXPECT_EQ(platform::preferredLanguage(), std::nullopt);
    EXPECT_EQ(L10n::currentLanguage(), "en");
}

TEST_F(L10nLanguage, FirstNonEmptyVariableWins) {
    set("LANG", "es_ES.UTF-8");
    EXPECT_EQ(platform::preferredLanguage(), "es");
    EXPECT_EQ(L10n::currentLanguage(), "es");
    set("LC_MESSAGES", "en_GB");
    EXPECT_EQ(L10n::currentLanguage(), "en");
    set("LC_ALL", "es");
    EXPECT_EQ(L10n::currentLanguage(), "es");
    set("LC_ALL", "");  // empty counts as unset
    EXPECT_EQ(L10n::currentLanguage(), "en");
}

TEST_F(L10nLanguage, CAndUnknownLanguagesFallBackToEnglish) {
    set("LANG", "C.UTF-8");
    EXPECT_EQ(platform::preferredLanguage(), std::nullopt);
    EXPECT_EQ(L10n::currentLanguage(), "en");
    set("LANG", "pt_BR.UTF-8");
    EXPECT_EQ(platform::preferredLanguage(), "pt");
    EXPECT_EQ(L10n::currentLanguage(), "en");
}

}  // namespace
}  // namespace kelvo
