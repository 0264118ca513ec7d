#pragma once
// Moves the AI caches and logs the user selected to the Trash, one location at a time,
// each re-verified immediately before its own move. It refuses anything the scanner does
// not approve and anything that overlaps a folder the user added for tracking; nothing
// is ever deleted.
//
// The checks of one location, in this order (the first that fails is its detail):
//  1. the identity of the folder is read (path standardized);
//  2. it overlaps a folder the user added;
//  3. it is not approved for cleanup;
//  4. it is no longer the folder measured (device, inode, birth time);
//  5. a folder on its path is now a symbolic link;
//  6. its identity changed since step 1 (or cannot be read);
//  7. it overlaps an added folder now;
//  then it moves through the shared verified Trash move, which opens its parent without
//  links and, right before the rename, refuses a folder changed since step 1 or holding a
//  mount point ("This folder holds another mounted file system; unmount it first.").
//
// Contract: run() is synchronous on its (background) thread; progress and the changed
// paths sink are called on that thread. No failure stops the run: every location ends as
// moved or not moved. The sink gets the moved paths once at the end, when any moved.

#include <functional>
#include <string>
#include <vector>

#include "aistorage/AIStorageCleanupReport.hpp"
#include "aistorage/AIStorageLocation.hpp"
#include "scan/ChangedPaths.hpp"

namespace veldan {

class AIStorageCleanupExecutor {
public:
    // What the confirmation says before anything moves.
    static constexpr const char* checksAgainNote =
        "Veldan checks each location again before moving it to Trash. Models, conversations, "
        "workspace data, settings, and folders you added stay in place.";
    static constexpr const char* mayRecreateNote =
        "Tools may recreate these folders. Space is reclaimed after you empty Trash; actual "
        "savings may be lower.";

    using Progress =
        std::function<void(int64_t completed, int64_t total, AIStorageCleanupPhase phase)>;

    explicit AIStorageCleanupExecutor(ChangedPathsSink changedPaths = {});

    // `locations` as last measured; `protectedPaths` the folders the user added.
    AIStorageCleanupReport run(const std::vector<AIStorageLocation>& locations,
                               const std::vector<std::string>& protectedPaths,
                               const Progress& progress = {}) const;

    // Equal, or one inside the other, for the path as written or with links resolved. An
    // empty list never overlaps.
    static bool overlapsTrackedLocation(const std::string& path,
                                        const std::vector<std::string>& protectedPaths);

    // Runs after the checks against the scan and before the final ones; tests change the
    // folder here to prove that the final checks hold.
    std::function<void(const AIStorageLocation&)> beforeFinalCheck;

private:
    AIStorageCleanupMove handle(const AIStorageLocation& location,
                                const std::vector<std::string>& protectedPaths,
                                const std::function<void()>& moving) const;

    ChangedPathsSink changedPaths_;
};

}  // namespace veldan
