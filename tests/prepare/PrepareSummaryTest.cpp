#include <gtest/gtest.h>

#include <map>

#include "kelvo/L10n.h"
#include "kelvo/PrepareSummary.h"
#include "support/Targets.h"

namespace kelvo {
namespace {

using testing::targetOf;

CleanTarget leftover(std::int64_t bytes) { return targetOf("leftover:x", CleanKind::paths({"/h/x"}), bytes, Family::appLeftovers); }
CleanTarget app(std::int64_t bytes) { return targetOf("app:x", CleanKind::paths({"/h/X.app"}), bytes, Family::unusedApps); }
CleanTarget runtime(std::int64_t bytes) {
    return targetOf("sim-runtime:x", CleanKind::command("xcrun simctl runtime delete x"), bytes, Family::simulators);
}

TEST(PrepareSummary, ReadsAsWrittenInEachLanguage) {
    // Given out of order; a target of another family adds to the total without a part, and
    // a command of known size is not of unknown size.
    const auto other = targetOf("derived-data", CleanKind::command("true"), 7, Family::xcodeCore);
    struct Case {
        std::vector<CleanTarget> targets;
        std::map<std::string, std::string> expected;  // by language
    };
    const std::vector<Case> cases{
        {{},
         {{"en", "Will free 0 B. Removal is permanent."},
          {"es", "Liberará 0 B. El borrado es permanente."}}},
        {{leftover(1024), runtime(0)},
         {{"en", "Will free 1.00 KB (1 leftover · 1 runtime), plus 1 of unknown size. Removal is permanent."},
          {"es", "Liberará 1.00 KB (1 resto · 1 runtime), más 1 de tamaño desconocido. El borrado es permanente."}}},
        {{app(100), app(200)},
         {{"en", "Will free 300 B (2 apps). Removal is permanent. 2 applications will be uninstalled."},
          {"es", "Liberará 300 B (2 apps). El borrado es permanente. Se desinstalarán 2 aplicaciones."}}},
        {{runtime(5000), app(2000), leftover(3000), leftover(4000), other},
         {{"en", "Will free 13.68 KB (2 leftovers · 1 app · 1 runtime). Removal is permanent. One application will be uninstalled."},
          {"es", "Liberará 13.68 KB (2 restos · 1 app · 1 runtime). El borrado es permanente. Se desinstalará una aplicación."}}},
    };
    for (const auto& [targets, expected] : cases) {
        ASSERT_TRUE(expected.contains(L10n::currentLanguage())) << L10n::currentLanguage();
        EXPECT_EQ(PrepareSummary::line(targets), expected.at(L10n::currentLanguage()));
    }
}

}  // namespace
}  // namespace kelvo
