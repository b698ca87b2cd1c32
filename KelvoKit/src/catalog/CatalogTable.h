#pragma once
// Private to the library: the clean catalog as one table, one row per detector id, in
// catalog order (the per-project entry, built from its own rows, comes last). A row holds
// what is true of the id on every system (kind, family, level, cost, the prefixes of a
// versioned entry, the programs that guard its data while they run) and, per catalog
// profile, where the tool keeps its data there: the places, the marks its tool leaves in
// them (PlaceMarks) and their reversibility. A row whose placement for a profile is empty
// has no entry in that profile's catalog.
//
// The table is a constexpr array in the library, not a data file beside the text bundles:
// building the catalog then reads no file and cannot fail, the compiler checks every
// family and risk value, and a malformed place is a build error (see CatalogPlaces).
//
// Places are written in a small notation, resolved by CatalogPlaces against the
// environment; "; " separates the places of one placement:
//   "~/rel"                  under the home
//   "@cache/rel"             under $XDG_CACHE_HOME, else ~/.cache (also @data, @config,
//                            @state for the other XDG base folders)
//   "@tmp", "@flutter"       the temporary folder; the Flutter SDK's bin cache (a place
//                            based on it exists only when an SDK is known)
//   "$VAR/rel > fallback"    under the tool's location variable when it is set, else the
//                            fallback (itself such a chain); a variable naming the
//                            fallback's own place counts as the fallback; without a
//                            fallback, no place while the variable is unset
//   "place unless $VAR"      left out while the variable is set (it replaces the place)
//   "dir/{a,b}/{c,d}"        brace alternatives, expanded left to right like the shell's
// Marks, prefixes and guards are lists with "; " between the elements.
#include <span>
#include <string_view>

#include "kelvo/CatalogProfile.h"
#include "kelvo/Family.h"
#include "kelvo/RiskAxes.h"

namespace kelvo::CatalogTable {

// A path entry offers its places as one target; a versioned entry each subfolder of its
// one place; a command entry runs its line through the shell.
enum class Kind { path, versioned, command };

struct Placement {
    // A path entry's places, a versioned entry's parent, or a command entry's line;
    // empty: not in this profile's catalog.
    std::string_view places;
    std::string_view marks = {};
    Reversibility reversibility = Reversibility::regenerable;
};

struct Entry {
    std::string_view id;
    Kind kind = Kind::path;
    Family family = Family::devMisc;
    Level level = Level::safe;
    RegenCost cost = RegenCost::rebuild;
    std::string_view prefixes = {};
    // Programs that write the entry's places while they run (kept with the entry, not the
    // family: bun running does not hold npm's cache); a path or command entry only.
    std::string_view guards = {};
    Placement macos;
    Placement gnuLinux;
    // A path entry offered only while this program is not found: found, its own command
    // entry covers the same places.
    std::string_view unlessFound = {};

    constexpr const Placement& on(CatalogProfile profile) const {
        return profile == CatalogProfile::macos ? macos : gnuLinux;
    }
};

std::span<const Entry> entries();

}  // namespace kelvo::CatalogTable
