#pragma once
// The text that `veldan dev` prints: the generated folders found, grouped by kind with
// their sizes and last modification, the total, and the report of a move to Trash.
// Paths go through Terminal::display, so a hostile name can neither break a line nor
// move the cursor.

#include <cstdint>
#include <ostream>
#include <set>
#include <string>

#include "cli/DevListing.hpp"
#include "cli/Terminal.hpp"
#include "devcleanup/DevCleanupReport.hpp"
#include "devcleanup/DevCleanupResult.hpp"

namespace veldan::cli {

struct DevTextOptions {
    bool color = false;
    // Set when --kind or --older-than narrowed the list: how that reads.
    std::string filterDescription;
    // With a selection, each folder is marked as going to the Trash or staying.
    const std::set<std::string>* selection = nullptr;
};

void writeDevItems(std::ostream& out, const DevCleanupResult& result, const DevListing& listing,
                   const DevTextOptions& options);

// "3 folders (1.2 GB)"
std::string foldersText(int64_t count, int64_t bytes);

void writeDevReport(std::ostream& out, const DevCleanupReport& report, bool color);

}  // namespace veldan::cli
