#pragma once
// Moves selected generated folders to the Trash, one at a time, each only after checking
// it again. For every folder, in this order, the first failing check is the reason it
// stays where it is:
//  1. it lies inside the searched folder (and is neither that folder nor "/");
//  2. it was measured completely;
//  3. no folder of its path is a symbolic link now, nor is the folder itself;
//  4. it is the same folder, with the same times;
//  5. it is still recognised as the same kind (its marker file is still there);
//  6. everything inside is exactly what was measured (walked again);
//  7. right before the move, path, identity, times and kind are checked once more.
// The move renames the folder relative to its parent, opened from "/" without following
// any link; right before the rename the Trash checks once more that the folder is
// unchanged and refuses one that holds another mounted file system ("This folder holds
// another mounted file system; unmount it first.").
//
// Contract: run() is synchronous and blocks its (background) thread for every walk;
// progress and the after-move callback are called on that thread. The run never stops
// early: every item gets a move record.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "devcleanup/DevCleanupItem.hpp"
#include "devcleanup/DevCleanupReport.hpp"

namespace veldan {

// Points where tests step in, on the executor's thread, to change a folder and prove
// that the checks which follow hold. The product leaves them empty.
struct DevCleanupMoveSeams {
    // After the contents matched (check 6), before the last look (check 7).
    std::function<void()> afterContentsCheck;
};

class DevCleanupTrashExecutor {
public:
    // (folders finished so far, folders selected, what happens to the next one). Called
    // as each folder is checked, moved and finished, and while its contents are walked.
    using Progress = std::function<void(int64_t done, int64_t total, DevCleanupMovePhase phase)>;
    // Receives the report once at the end, when anything moved, so that maps that
    // measured the moved folders are dropped and the move is recorded.
    using AfterMove = std::function<void(const DevCleanupReport& report)>;

    explicit DevCleanupTrashExecutor(AfterMove afterMove = {}, DevCleanupMoveSeams seams = {});

    // `items` in selection order; `scope` is the folder that was searched.
    DevCleanupReport run(const std::vector<DevCleanupItem>& items, const std::string& scope,
                         const Progress& progress = {}) const;

private:
    AfterMove afterMove_;
    DevCleanupMoveSeams seams_;
};

}  // namespace veldan
