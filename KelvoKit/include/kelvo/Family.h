#pragma once
// The category a cleaner belongs to. Raw values are the stored and exchanged form
// (configuration file, scan plan); display names are looked up, never stored. The general
// entries (editors, logs, the trash, scratch folders) are `general` on every system, but
// keep the raw value "macosGeneral" they were first stored under: configuration files and
// plans written before stay valid, and older versions still read the files written now.
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kelvo/CatalogProfile.h"

namespace kelvo {

enum class Family {
    xcodeCore, simulators, cocoapods, flutterDart, androidGradle, jsPackages, devMisc,
    perProject, general, docker, appLeftovers, unusedApps, dotNet, reactNative,
    webBuild, jvm, python, gameEngines, otherLangs, oldRuntimes,
};

// All 20 families in declaration order.
const std::array<Family, 20>& allFamilies();
// The 17 families of the clean domain (all but the prepare families appLeftovers,
// unusedApps and oldRuntimes), in order.
const std::vector<Family>& cleanDomainFamilies();

std::string_view rawValue(Family family);
// Exact, case-sensitive match of a raw value; nothing for anything else.
std::optional<Family> familyFromRawValue(std::string_view raw);
// Lenient parser for names typed by a user ("xcode", ".NET", "py", ...): lower-cased,
// then matched against a fixed word list. Most raw values are not accepted as such.
std::optional<Family> familyFromAlias(std::string_view name);
// A name a user may type for a family: an alias word, else an exact raw value.
std::optional<Family> familyFromUserName(std::string_view name);
// Every word familyFromUserName accepts, aliases first, for a usage message.
std::vector<std::string> acceptedFamilyNames();
// The same words, only those that name one of the families given (a catalog's own).
std::vector<std::string> acceptedFamilyNames(const std::vector<Family>& among);

std::string displayName(Family family);
// The name under a catalog profile: "family.<profile>.<raw>" where the texts have one
// (general is "General" on Linux), else the name above.
std::string displayName(Family family, CatalogProfile profile);
std::string_view iconName(Family family);
// Whether a clean from the panel moves the family's path targets into the desktop trash
// while the user has not chosen: only the leftovers of removed applications, which no
// tool regenerates.
bool trashedByDefault(Family family);
// Programs that hold the family's data open while they run, in the order they are asked about.
const std::vector<std::string>& guardedProcesses(Family family);

}  // namespace kelvo
