#pragma once
// The saved map of a folder for the commands that can work from it instead of scanning
// (`show`, `report --saved`, `recommend --saved`).

#include <optional>
#include <string>

#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

// The saved map of `root` (absolute, standardized), or nothing after printing one
// sentence that says why: the folder cannot be used, or it has no saved map (never
// scanned, replaced since, or a damaged file).
std::optional<ScanSnapshot> loadSavedMap(const std::string& root);

}  // namespace veldan::cli
