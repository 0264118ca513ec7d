#pragma once
// What a cleanup run did: one result per recommendation, in the order they ran, with
// the folders that stayed in place and why.
//
// Contract: plain values, safe to copy between threads.

#include <cstdint>
#include <string>
#include <vector>

namespace veldan {

// A failure of one cleanup step, shown to the user as is (one sentence).
struct CleanupError {
    std::string message;
};

struct CleanupFolderFailure {
    std::string path;
    std::string reason;  // one of the executor's reason texts or the Trash's own sentence
    friend bool operator==(const CleanupFolderFailure&, const CleanupFolderFailure&) = default;
};

struct CleanupItemResult {
    std::string id;  // the recommendation's id
    std::string title;
    bool succeeded = false;
    std::string detail;  // shown under the title
    int64_t movedFolders = 0;
    int64_t totalFolders = 0;  // 0 for a tool's own cleanup
    std::vector<CleanupFolderFailure> failedFolders;
    std::vector<std::string> movedPaths;
};

struct CleanupReport {
    std::string id;  // unique per run
    std::vector<CleanupItemResult> results;

    int64_t succeededCount() const;
    // Results that did not succeed but moved at least one folder.
    int64_t partialCount() const;
    // Every moved path, in order.
    std::vector<std::string> movedPaths() const;
    // Succeeded tool cleanups (results without folders).
    int64_t completedToolCount() const;
};

}  // namespace veldan
