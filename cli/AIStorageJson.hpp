#pragma once
// The JSON document of `veldan ai --json`, for scripts: the groups with every location
// (kinds and statuses by their raw values), which are cleanable and selected, and the
// report of a move to Trash. Paths that are not valid UTF-8 survive byte for byte.

#include "aistorage/AIStorageCleanupReport.hpp"
#include "aistorage/AIStorageCustomLocation.hpp"
#include "aistorage/AIStorageSelection.hpp"
#include "aistorage/AIStorageSnapshot.hpp"
#include "cli/JsonText.hpp"

namespace veldan::cli {

Json aiStorageJson(const AIStorageSnapshot& snapshot, const AIStorageSelection* selection,
                   const AIStorageCleanupReport* report, bool needsRefreshAfterMove);
Json customLocationsJson(const std::vector<AIStorageCustomLocation>& locations);

}  // namespace veldan::cli
