#include "cli/SavedMap.hpp"

#include <iostream>

#include "cache/ScanCache.hpp"
#include "cli/Terminal.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

std::optional<ScanSnapshot> loadSavedMap(const std::string& root) {
    auto snapshot = ScanCache::shared().load(root);
    if (snapshot) return snapshot;
    if (auto problem = DiskScanner::rootProblem(root)) {
        std::cerr << "veldan: " << Terminal::display(*problem) << '\n';
    } else {
        std::cerr << "veldan: There is no saved map of " << Terminal::display(root)
                  << "; run veldan scan on it first.\n";
    }
    return std::nullopt;
}

}  // namespace veldan::cli
