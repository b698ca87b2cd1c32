#pragma once
// A target as a detector would offer it, for tests that feed targets to a service, the
// scanner or a summary: the fields a test does not name keep their defaults.
#include <string>
#include <utility>

#include "kelvo/CleanTarget.h"

namespace kelvo::testing {

inline CleanTarget targetOf(std::string id, CleanKind kind, std::int64_t sizeBytes = 0, Family family = Family::devMisc,
                            Level level = Level::safe) {
    return {.id = id, .name = id, .family = family, .kind = std::move(kind), .sizeBytes = sizeBytes, .level = level};
}

}  // namespace kelvo::testing
