#include "kelvo/RiskAxes.h"

#include <array>

namespace kelvo {
namespace {

template <typename Enum, std::size_t Count>
std::optional<Enum> fromRaw(const std::array<std::string_view, Count>& names, std::string_view raw) {
    for (std::size_t i = 0; i < Count; ++i)
        if (names[i] == raw) return static_cast<Enum>(i);
    return std::nullopt;
}

constexpr std::array<std::string_view, 3> levelNames{"safe", "moderate", "aggressive"};
constexpr std::array<std::string_view, 2> reversibilityNames{"regenerable", "userData"};
constexpr std::array<std::string_view, 3> regenCostNames{"rebuild", "reindex", "redownload"};

}  // namespace

std::string_view rawValue(Level level) { return levelNames[static_cast<std::size_t>(level)]; }
std::string_view rawValue(Reversibility reversibility) {
    return reversibilityNames[static_cast<std::size_t>(reversibility)];
}
std::string_view rawValue(RegenCost cost) { return regenCostNames[static_cast<std::size_t>(cost)]; }

std::optional<Level> levelFromRawValue(std::string_view raw) { return fromRaw<Level>(levelNames, raw); }
std::optional<Reversibility> reversibilityFromRawValue(std::string_view raw) {
    return fromRaw<Reversibility>(reversibilityNames, raw);
}
std::optional<RegenCost> regenCostFromRawValue(std::string_view raw) {
    return fromRaw<RegenCost>(regenCostNames, raw);
}

}  // namespace kelvo
