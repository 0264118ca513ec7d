#pragma once
// The three phases of a duplicate search, in order. The ordinal is what progress reports
// carry; the label is the text shown to the user.

#include <cstdint>
#include <functional>
#include <string_view>

namespace veldan {

enum class DuplicateScanPhase {
    collecting = 0,
    sampling = 1,
    verifying = 2,
};

// "Looking for matching sizes", "Comparing file samples", "Verifying entire files".
std::string_view duplicateScanPhaseLabel(DuplicateScanPhase phase);

// (phase, completed, total): while collecting, completed counts the files seen and total
// is 0; while hashing, completed and total count candidates. Called from worker threads.
using DuplicateScanProgress =
    std::function<void(DuplicateScanPhase phase, int64_t completed, int64_t total)>;

}  // namespace veldan
