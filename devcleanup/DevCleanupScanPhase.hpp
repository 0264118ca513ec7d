#pragma once
// The two phases of a search for generated folders, and how progress is reported.

#include <cstdint>
#include <functional>
#include <string_view>

namespace veldan {

enum class DevCleanupScanPhase {
    discovering = 0,
    measuring = 1,
};

// "Finding generated folders", "Checking generated folders".
std::string_view devCleanupScanPhaseLabel(DevCleanupScanPhase phase);

// (phase, its label, completed, total). While discovering, completed counts the folders
// looked at and total the generated folders found so far; while measuring, completed
// counts the folders measured out of total. Called from worker threads, never under a
// lock of the scanner.
using DevCleanupScanProgress = std::function<void(DevCleanupScanPhase phase, std::string_view label,
                                                  int64_t completed, int64_t total)>;

}  // namespace veldan
