#include "kelvo/ScanPlanJSON.h"

#include <nlohmann/json.hpp>

#include "vocabulary/JsonLayout.h"
#include "kelvo/PlanSelection.h"

namespace kelvo {

ScanPlanJSON::ScanPlanJSON(const std::vector<CleanTarget>& targetList, const ScanSummary& summary,
                           const std::set<std::string>& selectedIDs)
    : totalBytes(summary.totalBytes) {
    for (const auto& [family, bytes] : summary.byFamily) byFamily.emplace(rawValue(family), bytes);
    for (const auto& [level, bytes] : summary.byLevel) byLevel.emplace(rawValue(level), bytes);
    for (const auto& target : targetList) {
        std::optional<std::vector<std::string>> paths;
        std::optional<std::string> command;
        if (target.kind.isCommand()) {
            command = target.kind.commandLine();
        } else {
            paths.emplace();
            for (const auto& path : target.kind.pathList()) paths->push_back(path.string());
        }
        targets.push_back({target.id, target.name, std::string(rawValue(target.family)), target.sizeBytes,
                           std::string(rawValue(target.level)), std::string(rawValue(target.reversibility)),
                           std::string(rawValue(target.regenCost)), selectedIDs.contains(target.id), target.notes,
                           std::move(paths), std::move(command)});
    }
}

ScanPlanJSON::ScanPlanJSON(const std::vector<CleanTarget>& targetList)
    : ScanPlanJSON(targetList, Reporter::summarize(targetList), PlanSelection(targetList).selectedIDs) {}

std::string ScanPlanJSON::encoded() const {
    nlohmann::json targetArray = nlohmann::json::array();
    for (const auto& target : targets) {
        auto& member = targetArray.emplace_back(nlohmann::json{
            {"id", target.id},
            {"name", target.name},
            {"family", target.family},
            {"sizeBytes", target.sizeBytes},
            {"level", target.level},
            {"reversibility", target.reversibility},
            {"regenCost", target.regenCost},
            {"preselected", target.preselected},
            {"notes", target.notes},
        });
        if (target.paths) member["paths"] = *target.paths;
        if (target.command) member["command"] = *target.command;
    }
    nlohmann::json document = {
        {"totalBytes", totalBytes},
        {"byFamily", byFamily.empty() ? nlohmann::json::object() : nlohmann::json(byFamily)},
        {"byLevel", byLevel.empty() ? nlohmann::json::object() : nlohmann::json(byLevel)},
        {"targets", targetArray},
    };
    if (!notes.empty()) document["notes"] = notes;
    return JsonLayout::pretty(document);
}

}  // namespace kelvo
