#include "kelvo/ExecutionReportJSON.h"

#include <nlohmann/json.hpp>

#include "vocabulary/JsonLayout.h"

namespace kelvo {
namespace {

nlohmann::json entries(const std::vector<ReportEntry>& items, const char* textKey) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& item : items) list.push_back({{"id", item.id}, {textKey, item.reason.text()}});
    return list;
}

nlohmann::json ids(const std::vector<std::string>& list) { return list.empty() ? nlohmann::json::array() : nlohmann::json(list); }

}  // namespace

std::string ExecutionReportJSON::encoded(const ExecutionReport& report, bool dryRun) {
    const nlohmann::json document = {
        {"dryRun", dryRun},
        {"freedBytes", report.freedBytes},
        {"trashedBytes", report.trashedBytes},
        {"deleted", ids(report.deleted)},
        {"partial", ids(report.partial)},
        {"freedUnknown", ids(report.freedUnknown)},
        {"trashed", ids(report.trashed)},
        {"skipped", entries(report.skipped, "reason")},
        {"errors", entries(report.errors, "message")},
    };
    return JsonLayout::pretty(document);
}

}  // namespace kelvo
