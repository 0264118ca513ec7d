#pragma once
// `veldan activity` for people: the free-space history with a bar per day, the recent
// downloads with the review hint, the cleanup history with its totals, and the note that
// all of it stays on this computer.

#include <chrono>
#include <ostream>

#include "activity/ActivityArchive.hpp"
#include "cli/Terminal.hpp"

namespace veldan::cli {

struct ActivityTextOptions {
    bool dailyEnabled = false;
    bool dailyDue = false;
    std::chrono::system_clock::time_point now;
    int width = 100;  // columns for the bars and names
};

void writeActivityText(std::ostream& out, const ActivityArchive& history,
                       const ActivityTextOptions& options, const Style& style);

// "+2.1 GB free since the previous check" (or "−…" when space went down).
std::string freeSpaceChangeText(int64_t change);

}  // namespace veldan::cli
