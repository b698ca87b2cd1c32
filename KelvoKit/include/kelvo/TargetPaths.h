#pragma once
// What a clean would touch for one target, shown before anything goes: the paths of a path
// target, each measured on its own, and a short preview for places with little room (the
// first few lines and how many were left out).
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/DirectorySizer.h"

namespace kelvo::TargetPaths {

struct MeasuredPath {
    std::filesystem::path path;
    Measurement size;  // hadErrors: the bytes are a lower bound
};

// Each path of a path target as the sizer measures it, in the target's order; nothing for a
// command target.
std::vector<MeasuredPath> measured(const CleanTarget& target, const DirectorySizer& sizer);

struct Preview {
    std::vector<std::string> lines;
    std::size_t more = 0;  // paths left out after the lines
    friend bool operator==(const Preview&, const Preview&) = default;
};

// Up to `limit` paths of a path target in its order and the count of the rest; a command
// target's one line is its command. When only one path would be left out it is shown in
// place of the "1 more" that would take the same room.
Preview preview(const CleanTarget& target, std::size_t limit);

}  // namespace kelvo::TargetPaths
