#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <locale>
#include <map>
#include <set>

#include "kelvo/DiskSpace.h"
#include "kelvo/Family.h"
#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/Reporter.h"
#include "kelvo/RiskAxes.h"
#include "support/ScopedEnvironment.h"
#include "support/TargetIds.h"
#include "support/Targets.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

TEST(L10nCatalogs, EveryKeyIsInEveryCatalogWithTheEnglishPlaceholdersAndEverySingularWithItsGeneralFormsOnes) {
    const auto bundle = L10n::loadBundle(KELVO_BUNDLE_SOURCE_PATH);
    ASSERT_TRUE(bundle.has_value()) << "cannot load " << KELVO_BUNDLE_SOURCE_PATH;
    ASSERT_TRUE(bundle->catalogs.contains("en"));
    ASSERT_GE(bundle->catalogs.size(), 2u);
    const auto& english = bundle->catalogs.at("en").texts;
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
    EXPECT_EQ(L10n::t("no.such.key"), "no.such.key");  // a missing text shows its key
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
    // Two digits of position at most: "%01$s" is the first argument, "%100$s" literal text.
    EXPECT_EQ(formatText("%01$s, %100$s", {std::string("a")}), "a, %100$s");
    EXPECT_EQ(L10n::placeholderSignature("%2$d then %1$s"), "sd");
    EXPECT_EQ(L10n::placeholderSignature("100%% done"), "");
    EXPECT_NE(L10n::placeholderSignature("%d (%s)"), L10n::placeholderSignature("%s (%d)"));
}

TEST(L10nLanguage, TheFirstNonEmptyVariableNamesTheLanguageOrEnglish) {
    using Values = testing::ScopedEnvironment::Values;
    const std::vector<std::pair<Values, std::string>> cases{
        {{}, "en"}, {{{"LANG", "es_ES.UTF-8"}}, "es"}, {{{"LANG", "es_ES.UTF-8"}, {"LC_MESSAGES", "en_GB"}}, "en"},
        {{{"LANG", "en"}, {"LC_MESSAGES", "en_GB"}, {"LC_ALL", "es"}}, "es"},
        {{{"LANG", "es"}, {"LC_ALL", ""}}, "es"},  // empty counts as unset
        {{{"LANG", "pt_BR.UTF-8"}}, "en"},  // no catalog of its own
    };
    for (const auto& [values, language] : cases) {
        Values all{{"LC_ALL", std::nullopt}, {"LC_MESSAGES", std::nullopt}, {"LANG", std::nullopt}};
        for (const auto& [name, value] : values) all[name] = value;
        const testing::ScopedEnvironment variables(all);
        EXPECT_EQ(L10n::currentLanguage(), language) << ::testing::PrintToString(values);
    }
}

TEST(Vocabulary, AliasesAreCaseInsensitiveListedWordsRawValuesExactAndUniqueAndEveryFamilyHasATextAndAnIcon) {
    const std::vector<std::pair<std::string, std::optional<Family>>> cases{
        {"XCODE", Family::xcodeCore}, {"DotNet", Family::dotNet}, {"docker", Family::docker},
        {"xcodeCore", std::nullopt},  // a raw value only where it is also a word
        {"", std::nullopt}, {" xcode", std::nullopt},
    };
    for (const auto& [alias, family] : cases) EXPECT_EQ(familyFromAlias(alias), family) << alias;
    // Raw values of families and levels are unique, exact and round-trip; every family has a text and an icon.
    std::set<std::string_view> seen;
    for (Family family : allFamilies()) {
        EXPECT_EQ(familyFromRawValue(rawValue(family)), family) << rawValue(family);
        EXPECT_TRUE(seen.insert(rawValue(family)).second) << "duplicate raw value " << rawValue(family);
        EXPECT_NE(displayName(family), "family." + std::string(rawValue(family)));
        EXPECT_FALSE(iconName(family).empty()) << rawValue(family);
    }
    EXPECT_EQ(familyFromRawValue("Docker"), std::nullopt);
    const auto& clean = cleanDomainFamilies();
    EXPECT_TRUE(std::is_sorted(clean.begin(), clean.end()));
    for (Family prepareOnly : {Family::appLeftovers, Family::unusedApps, Family::oldRuntimes})
        EXPECT_EQ(std::count(clean.begin(), clean.end(), prepareOnly), 0);
    for (Level level : {Level::safe, Level::moderate, Level::aggressive}) EXPECT_EQ(levelFromRawValue(rawValue(level)), level);
    EXPECT_EQ(levelFromRawValue("Safe"), std::nullopt);
}

// A decimal comma in the C++ global locale (always available, built here) and, where one is
// installed, in the C locale too: neither may reach the text.
struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// Sizes as typed and as shown, in multiples of 1024, with a full stop whatever the locale.
TEST(FormatBytes, ParsesAndWritesSizesInMultiplesOf1024WithAFullStopWhateverTheLocale) {
    const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "es_ES.UTF-8");
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> parsed{
        {"4096", 4096}, {"0", 0}, {"5G", 5LL << 30}, {"5GB", 5LL << 30}, {"5 gb", 5LL << 30}, {"500M", 500LL << 20},
        {"1.5K", 1536}, {"2t", 2LL << 40}, {"7B", 7}, {"8191P", std::nullopt}, {"", std::nullopt}, {"G", std::nullopt},
        {"-5G", std::nullopt}, {"5BB", std::nullopt}, {"1.2.3M", std::nullopt}, {"5GiB", std::nullopt},
        {"9000000T", std::nullopt},
    };
    for (const auto& [text, bytes] : parsed) EXPECT_EQ(Format::parseBytes(text), bytes) << text;
    const std::vector<std::pair<std::int64_t, std::string>> written{
        {-5, "0 B"}, {0, "0 B"}, {1023, "1023 B"}, {1024, "1.00 KB"}, {1536, "1.50 KB"},
        // 1.125 and 1.375 are exact ties: rounded as "%.2f" does, to the even hundredth.
        {1152, "1.12 KB"}, {1408, "1.38 KB"}, {1048575, "1024.00 KB"}, {1048576, "1.00 MB"}, {1073741824, "1.00 GB"},
        {1099511627776, "1.00 TB"}, {1099511627776LL * 2048, "2048.00 TB"},
    };
    for (const auto& [bytes, text] : written) EXPECT_EQ(Format::bytes(bytes), text) << bytes;
    std::setlocale(LC_ALL, "C");
    std::locale::global(previous);
}

CleanTarget target(std::string id, Family family, Level level, std::int64_t size) {
    return testing::targetOf(std::move(id), CleanKind::paths({"/p"}), size, family, level);
}

// Sums keep zero entries and the targets' order; sorted, equal sizes keep it too; groups are
// in family declaration order whatever the input order, each largest first, none when empty.
TEST(Reporter, SumsSortsAndGroupsByFamily) {
    const std::vector<CleanTarget> targets{
        target("a", Family::python, Level::moderate, 5),
        target("b", Family::jvm, Level::safe, 0),  // only size 0: still an entry of 0
        target("c", Family::python, Level::aggressive, 9),
        target("d", Family::docker, Level::moderate, 9),
    };
    const auto summary = Reporter::summarize(targets);
    EXPECT_EQ(summary.totalBytes, 23);
    EXPECT_EQ(summary.byFamily, (std::map<Family, std::int64_t>{{Family::python, 14}, {Family::jvm, 0}, {Family::docker, 9}}));
    EXPECT_EQ(summary.byLevel, (std::map<Level, std::int64_t>{{Level::moderate, 14}, {Level::safe, 0}, {Level::aggressive, 9}}));
    EXPECT_EQ(testing::idsOf(summary.targets), (std::vector<std::string>{"a", "b", "c", "d"}));
    EXPECT_EQ(testing::idsOf(Reporter::largestFirst(targets)), (std::vector<std::string>{"c", "d", "a", "b"}));
    std::vector<std::pair<Family, std::vector<std::string>>> groups;
    for (const auto& [family, members] : Reporter::byFamily(targets)) groups.emplace_back(family, testing::idsOf(members));
    EXPECT_EQ(groups, (std::vector<std::pair<Family, std::vector<std::string>>>{
                          {Family::docker, {"d"}}, {Family::jvm, {"b"}}, {Family::python, {"c", "a"}}}));
    EXPECT_TRUE(Reporter::byFamily({}).empty());
}

TEST(DiskSpace, UsedBytesAndFractionStayInRangeAtTheEdges) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::tuple<DiskSpace, std::int64_t, double>> cases{
        {{100, 25}, 75, 0.75},
        {{100, 150}, 0, 0.0},  // more free than total (purgeable space counted): nothing used
        {{0, 0}, 0, 0.0},
        {{-5, -10}, 5, 0.0},  // no total: no fraction
        {{100, 0}, 100, 1.0},
        {{largest, -1}, largest, 1.0},  // would overflow a plain subtraction
        {{std::numeric_limits<std::int64_t>::min(), 1}, 0, 0.0},
    };
    for (const auto& [space, used, fraction] : cases) {
        EXPECT_EQ(space.usedBytes(), used) << space.totalBytes << " " << space.freeBytes;
        EXPECT_DOUBLE_EQ(space.usedFraction(), fraction) << space.totalBytes << " " << space.freeBytes;
    }
    testing::TempDir directory;
    const auto current = DiskSpace::current(directory.path());
    ASSERT_TRUE(current);
    EXPECT_GT(current->totalBytes, 0);
    EXPECT_LE(current->freeBytes, current->totalBytes);
    EXPECT_EQ(DiskSpace::current(directory / "missing/deeper"), std::nullopt);
}

}  // namespace
}  // namespace kelvo
