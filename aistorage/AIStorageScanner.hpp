#pragma once
// Measures, read-only, every folder of the AI storage catalogue plus the folders the user
// added, and groups them by tool.
//
// Locations nested in one another are measured by the same worker, each separately: the
// containing location's size leaves the nested ones out and says so
// (`hasExcludedLocations`). Unrelated locations are measured in parallel, one worker
// thread per core and at most four. A catalogue location that lies inside or contains a folder the
// user added is never cleanable. Missing catalogue locations are left out of the result; missing
// added folders stay, so the user learns that one has gone.
//
// Contract: scan() blocks its (background) thread until every location is measured or
// the cancellation is set, and then returns nothing. `progress` is called from worker
// threads, never under a lock, with "Finding AI storage", the locations completed, the
// number of locations and the entries checked so far: once with 0 completed before any
// work, after each location, and every 0.25 s or so during a long one. The static checks
// are thread-safe.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "aistorage/AIStorageCustomLocation.hpp"
#include "aistorage/AIStorageSnapshot.hpp"
#include "aistorage/AIStorageTool.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

using AIStorageProgress = std::function<void(const std::string& title, int64_t completed,
                                             int64_t total, int64_t checkedEntries)>;

class AIStorageScanner {
public:
    static constexpr const char* progressTitle = "Finding AI storage";
    static constexpr int maximumWorkers = 4;

    // The catalogue of the current environment.
    AIStorageScanner();
    explicit AIStorageScanner(std::vector<AIStorageTool> catalogue);

    std::optional<AIStorageSnapshot> scan(const std::vector<AIStorageCustomLocation>& custom,
                                          const ScanCancellation& cancellation,
                                          const AIStorageProgress& progress = {}) const;

    // True only for a measured, non-empty, fingerprinted catalogue location of kind cache
    // or logs that is cleanable and one of the catalogue's cleanable paths.
    static bool isApprovedCleanupLocation(const AIStorageLocation& location);

    // Whether the folder at the location's path is still the one measured: no link on the
    // way, and the same device, inode and birth time. False without a fingerprint.
    static bool stillMatches(const AIStorageLocation& location);

private:
    std::vector<AIStorageTool> catalogue_;
};

}  // namespace veldan
