#pragma once
// The three risk axes of a target. They carry no ordering of their own; raw values are
// the stored form and conversion from a raw value is exact (anything else gives nothing).
#include <optional>
#include <string_view>

namespace kelvo {

enum class Level { safe, moderate, aggressive };
enum class Reversibility { regenerable, userData };
// What it costs to get the data back.
enum class RegenCost { rebuild, reindex, redownload };

std::string_view rawValue(Level level);
std::string_view rawValue(Reversibility reversibility);
std::string_view rawValue(RegenCost cost);

std::optional<Level> levelFromRawValue(std::string_view raw);
std::optional<Reversibility> reversibilityFromRawValue(std::string_view raw);
std::optional<RegenCost> regenCostFromRawValue(std::string_view raw);

}  // namespace kelvo
