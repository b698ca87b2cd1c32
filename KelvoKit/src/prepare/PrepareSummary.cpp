#include "kelvo/PrepareSummary.h"

#include "kelvo/Format.h"
#include "kelvo/L10n.h"

namespace kelvo {

std::string PrepareSummary::line(const std::vector<CleanTarget>& targets) {
    std::int64_t leftovers = 0;
    std::int64_t apps = 0;
    std::int64_t runtimes = 0;
    std::int64_t unknownSize = 0;
    std::int64_t total = 0;
    for (const auto& target : targets) {
        if (target.family == Family::appLeftovers) ++leftovers;
        if (target.family == Family::unusedApps) ++apps;
        if (target.family == Family::simulators || target.family == Family::oldRuntimes) ++runtimes;
        if (target.sizeUnknown()) ++unknownSize;
        total += target.sizeBytes;
    }

    std::vector<std::string> parts;
    if (leftovers > 0) parts.push_back(L10n::plural("prepare.summary.leftovers", leftovers, leftovers));
    if (apps > 0) parts.push_back(L10n::plural("prepare.summary.apps", apps, apps));
    if (runtimes > 0) parts.push_back(L10n::plural("prepare.summary.runtimes", runtimes, runtimes));

    std::string line = L10n::t("prepare.summary.willFree", Format::bytes(total));
    if (!parts.empty()) {
        line += " (";
        for (std::size_t index = 0; index < parts.size(); ++index) {
            if (index > 0) line += " \u00B7 ";
            line += parts[index];
        }
        line += ")";
    }
    // The texts below carry their own leading blank or punctuation.
    if (unknownSize > 0) line += L10n::t("prepare.summary.unknownCount", unknownSize);
    line += L10n::t("prepare.summary.permanent");
    if (apps == 1) line += L10n::t("prepare.summary.willUninstall.one");
    if (apps >= 2) line += L10n::t("prepare.summary.willUninstall.many", apps);
    return line;
}

}  // namespace kelvo
