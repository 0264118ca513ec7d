#pragma once
// The text that `veldan duplicates` prints: the groups found (optionally with what smart
// select would do with each copy), their totals, and the report of a move to Trash.

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "cli/Terminal.hpp"
#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateSelection.hpp"
#include "duplicates/DuplicateTrashReport.hpp"

namespace veldan::cli {

struct DuplicatesTextOptions {
    bool color = false;
    // Set when the groups were narrowed by --min-extra or --query: how it reads.
    std::string filterDescription;
    // With a selection, each copy is marked as moved by smart select, kept, or staying
    // in place with its reason.
    const DuplicatePathSet* selection = nullptr;
};

void writeDuplicateGroups(std::ostream& out, const DuplicateScanResult& result,
                          const std::vector<DuplicateGroup>& shown,
                          const DuplicatesTextOptions& options);

// "Move 3 copies (31.5 MB) to Trash" and the like: the count and logical size of `paths`.
std::string copiesText(int64_t count, int64_t bytes);
int64_t selectedBytes(const DuplicateScanResult& result, const DuplicatePathSet& selection);

void writeDuplicateTrashReport(std::ostream& out, const DuplicateTrashReport& report, bool color);

}  // namespace veldan::cli
