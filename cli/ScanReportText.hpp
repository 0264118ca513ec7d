#pragma once
// The human-readable form of a scan: header, the kept tree to a depth, the largest
// files, and what could not be read.

#include <ostream>
#include <string>

#include "cli/Terminal.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

struct ScanTextOptions {
    int depth = 2;
    bool color = false;
    std::string home;  // to label folders measured as a whole
};

void writeScanHeader(std::ostream& out, const std::string& scope, const ScanSnapshot& snapshot,
                     const Style& style);
void writeTree(std::ostream& out, const DiskNode& root, const ScanTextOptions& options);
void writeLargestFiles(std::ostream& out, const ScanSnapshot& snapshot, const Style& style);
void writeUnreadable(std::ostream& out, const ScanSnapshot& snapshot, const Style& style);
void writeScanText(std::ostream& out, const std::string& scope, const ScanSnapshot& snapshot,
                   const ScanTextOptions& options);

}  // namespace veldan::cli
