#pragma once
// The text that `veldan ai` prints: the tools found with each location's label, kind,
// size and status, which can move to Trash (and which are selected), and the report of a
// move.

#include <ostream>

#include "aistorage/AIStorageCleanupReport.hpp"
#include "aistorage/AIStorageSelection.hpp"
#include "aistorage/AIStorageSnapshot.hpp"

namespace veldan::cli {

// `selection` null: only marks what can be selected.
void writeAIStorage(std::ostream& out, const AIStorageSnapshot& snapshot,
                    const AIStorageSelection* selection, bool color);
void writeAIStorageReport(std::ostream& out, const AIStorageCleanupReport& report, bool color);

// "3 locations (1.2 GB)"
std::string locationCountText(int64_t count, int64_t bytes);

}  // namespace veldan::cli
