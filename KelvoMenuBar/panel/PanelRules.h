#pragma once
// The rules of the panel's screens as small pure functions of the model's values, so the
// widgets only show what these decide: which screen, what is enabled, the titles and the
// colour of the disk bar.
#include <QString>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/AppModel.h"

namespace kelvo::app {

enum class Screen { updateRequired, settings, onboarding, main };
// In this order: an update is required; settings are shown; onboarding is needed and was
// not left yet; otherwise the main panel.
Screen chooseScreen(bool updateRequired, bool showingSettings, bool needsOnboarding, bool onboardingDismissed);

// Scanning or cleaning: the domain switch, scan and select buttons and the action wait.
bool isBusy(AppModel::Phase phase);
std::int64_t selectedBytes(const AppModel& model);
// The families with at least one target, in the order of every family.
std::vector<Family> groups(const std::vector<CleanTarget>& targets);

enum class Tone { accent, orange, red };
// Accent up to three quarters used (or an unknown total), orange below nine tenths, red above.
Tone diskTone(const DiskSpace& disk);

QString domainVerb(AppModel::Domain domain);
QString actionTitle(AppModel::Domain domain, bool nothingSelected, std::int64_t selectedBytes);
// Freed bytes, the bytes moved to the trash (freed only when it is emptied), then the
// partial and skipped counts when there are any; errors are not shown.
QString resultLine(const ExecutionReport& report);
QString riskText(const CleanTarget& target);
// The first `shown` notes, one a line, and a last line "…" when there are more.
QString notesText(const std::vector<std::string>& notes, std::size_t shown);

// How many paths a row's tooltip lists before it says how many more there are.
inline constexpr std::size_t tooltipPathCount = 8;
// A row's tooltip: the target's notes (its name when it has none), then what a clean would
// do: the first paths it removes and how many more, or the command it runs.
QString rowTooltip(const CleanTarget& target);

}  // namespace kelvo::app
