#pragma once
// The file-system half of starting a scan and of accepting its result: is the chosen
// folder still there, which folder does its path lead to, and is it still that very
// folder when the scan ends. The model runs these off its own thread.
//
// Contract: every function reads the file system on the caller's thread; thread-safe.

#include <functional>
#include <optional>
#include <string>

#include "scan/ScanFolderIdentity.hpp"

namespace veldan {

// The folder a scan measures: its path with links resolved, and its identity then.
struct ScanRoot {
    std::string path;
    ScanFolderIdentity identity;
};

class ScanStartCheck {
public:
    static constexpr const char* unavailablePrefix = "This folder is no longer available: ";
    static constexpr const char* changedBeforeStart =
        "This folder changed before the scan could start. Choose it again.";
    static constexpr const char* changedDuringScan =
        "This folder changed during the scan. Choose it again for a fresh map.";

    struct Answer {
        std::optional<ScanRoot> root;  // set: the scan may start
        std::string refusal;           // otherwise the sentence to show
    };

    // `path` is absolute and standardized. It must be a folder (a link to one counts);
    // the folder its resolved path names must be the one the path named a moment before,
    // and readable. `beforeIdentity` runs between those two looks (tests replace the
    // folder there).
    static Answer check(const std::string& path, const std::function<void()>& beforeIdentity = {});

    // Whether `path` (standardized) still resolves to `root.path` and that folder's
    // identity is unchanged.
    static bool isUnchanged(const std::string& path, const ScanRoot& root);

    // Creates the folders this program writes into while a scan runs (its cache, state
    // and configuration folders), so that its own first writes on a new account are not
    // taken for a change of a scanned home folder. Failures are left to the writers.
    static void prepareOwnFolders();

    // Whether `path` is a folder (following links): the recent menu's and the command
    // line's test.
    static bool isFolder(const std::string& path);
};

}  // namespace veldan
