#pragma once
// Moves selected copies of verified duplicate groups to the Trash, one file at a time.
//
// Before a copy moves, it must still be the very file that was verified (a fresh full
// SHA-256 equal to the group's digest, and an unchanged status), it must be eligible,
// no folder of its path may have become a symbolic link, and an unselected copy of its
// group must still hold the same content (verified by a full SHA-256 once per group and
// run, then re-checked by its status only). A copy that fails any check stays untouched,
// with the first failing reason as its outcome. The move goes through the Trash's shared
// checks: it renames the file relative to its parent folder, opened from "/" without
// following any link, and right before the rename checks that the file is still the one
// verified (device, inode, birth, modification and change times) and that nothing is
// mounted on it.
//
// Contract: run() is synchronous and blocks its (background) thread for every read;
// progress and the changed-paths sink are called on that thread. The run never stops
// early: every selected file of the result gets an outcome.

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateSelection.hpp"
#include "duplicates/DuplicateTrashReport.hpp"
#include "platform/Sha256.hpp"
#include "scan/ChangedPaths.hpp"

namespace veldan {

class DuplicateTrashExecutor {
public:
    // (files handled so far, selected files in the result)
    using Progress = std::function<void(int64_t done, int64_t total)>;

    // Called with a copy that passed every check of its own, right before the move (whose
    // last look at the file comes after it). Tests replace the file there.
    using BeforeMove = std::function<void(const DuplicateFile&)>;

    // `changedPaths` receives the moved paths once at the end, when anything moved.
    explicit DuplicateTrashExecutor(ChangedPathsSink changedPaths = {}, BeforeMove beforeMove = {});

    DuplicateTrashReport run(const DuplicateScanResult& result,
                             const DuplicatePathSet& selectedPaths,
                             const Progress& progress = {}) const;

    // True when an unchanged copy with `digest` remains among `files` (the unselected
    // copies of a group). `cached` is the copy found by an earlier call for the same
    // group: while its status is unchanged it is trusted without reading it again;
    // otherwise the files are hashed in order and the first match becomes `cached`.
    static bool hasVerifiedKeeper(const std::vector<DuplicateFile>& files,
                                  std::optional<DuplicateFile>& cached,
                                  const platform::Sha256Digest& digest);

private:
    ChangedPathsSink changedPaths_;
    BeforeMove beforeMove_;
};

}  // namespace veldan
