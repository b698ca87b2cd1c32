#include <gtest/gtest.h>

#include "kelvo/Format.h"
#include "kelvo/L10n.h"
#include "kelvo/PrepareSummary.h"

namespace kelvo {
namespace {

CleanTarget leftover(std::int64_t bytes) {
    return {.id = "leftover:x", .family = Family::appLeftovers, .kind = CleanKind::paths({"/h/x"}), .sizeBytes = bytes};
}
CleanTarget app(std::int64_t bytes) {
    return {.id = "app:x", .family = Family::unusedApps, .kind = CleanKind::paths({"/Applications/X.app"}), .sizeBytes = bytes};
}
CleanTarget runtime(std::int64_t bytes) {
    return {.id = "sim-runtime:x", .family = Family::simulators, .kind = CleanKind::command("xcrun simctl runtime delete x"),
            .sizeBytes = bytes};
}

std::string willFree(std::int64_t bytes) { return L10n::t("prepare.summary.willFree", Format::bytes(bytes)); }

TEST(PrepareSummary, LeftoverAndRuntimeOfUnknownSize) {
    const std::string expected = willFree(1024) + " (" + L10n::t("prepare.summary.leftovers.one", std::int64_t{1}) +
                                 " \u00B7 " + L10n::t("prepare.summary.runtimes.one", std::int64_t{1}) + ")" +
                                 L10n::t("prepare.summary.unknownCount", std::int64_t{1}) +
                                 L10n::t("prepare.summary.permanent");
    EXPECT_EQ(PrepareSummary::line({leftover(1024), runtime(0)}), expected);
    EXPECT_EQ(Format::bytes(1024), "1.00 KB");
}

TEST(PrepareSummary, EmptyList) {
    EXPECT_EQ(PrepareSummary::line({}), willFree(0) + L10n::t("prepare.summary.permanent"));
    EXPECT_EQ(Format::bytes(0), "0 B");
}

TEST(PrepareSummary, UninstallSentenceBySingularAndPlural) {
    const auto permanent = L10n::t("prepare.summary.permanent");
    EXPECT_EQ(PrepareSummary::line({app(100), app(200)}),
              willFree(300) + " (" + L10n::t("prepare.summary.apps", std::int64_t{2}) + ")" + permanent +
                  L10n::t("prepare.summary.willUninstall.many", std::int64_t{2}));
    EXPECT_EQ(PrepareSummary::line({app(100)}),
              willFree(100) + " (" + L10n::t("prepare.summary.apps.one", std::int64_t{1}) + ")" + permanent +
                  L10n::t("prepare.summary.willUninstall.one"));
}

TEST(PrepareSummary, PartsInFixedOrderAndTotalsOfEveryFamily) {
    // Given in reverse order; the parts still read leftovers, apps, runtimes. A target of
    // another family adds to the total without a part, and a command with a known size
    // is not of unknown size.
    CleanTarget other{.id = "derived-data", .family = Family::xcodeCore, .kind = CleanKind::command("true"), .sizeBytes = 0};
    const std::string expected =
        willFree(5000 + 2000 + 3000 + 4000 + 7) + " (" + L10n::t("prepare.summary.leftovers", std::int64_t{2}) + " \u00B7 " +
        L10n::t("prepare.summary.apps.one", std::int64_t{1}) + " \u00B7 " + L10n::t("prepare.summary.runtimes.one", std::int64_t{1}) +
        ")" + L10n::t("prepare.summary.unknownCount", std::int64_t{1}) + L10n::t("prepare.summary.permanent") +
        L10n::t("prepare.summary.willUninstall.one");
    CleanTarget sizedOther = other;
    sizedOther.sizeBytes = 7;
    EXPECT_EQ(PrepareSummary::line({runtime(5000), app(2000), leftover(3000), leftover(4000), other, sizedOther}),
              expected);
}

TEST(PrepareSummary, CatalogTextsCarryTheirOwnSeparators) {
    // The pieces after the parentheses are joined without separators, so each must start
    // with a blank or punctuation in every language.
    for (const auto& [language, catalog] : L10n::bundle().catalogs) {
        for (const auto* key : {"prepare.summary.unknownCount", "prepare.summary.permanent",
                                "prepare.summary.willUninstall.one", "prepare.summary.willUninstall.many"}) {
            const auto found = catalog.texts.find(key);
            ASSERT_NE(found, catalog.texts.end()) << language << " " << key;
            ASSERT_FALSE(found->second.empty()) << language << " " << key;
            const char first = found->second.front();
            EXPECT_TRUE(first == ' ' || first == ',' || first == '.' || first == ';') << language << " " << key;
        }
        for (const auto* key : {"prepare.summary.willFree", "prepare.summary.leftovers", "prepare.summary.apps",
                                "prepare.summary.runtimes"})
            EXPECT_TRUE(catalog.texts.contains(key)) << language << " " << key;
    }
}

}  // namespace
}  // namespace kelvo
