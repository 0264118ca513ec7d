#pragma once
// Finds the folders that developer tools generate and can rebuild (dependency trees,
// build output, Python environments) under a folder or the whole startup disk, and
// measures each once, without changing anything.
//
// Protocol, two phases:
//  1. discovering: four workers search the scope (never following links, never leaving
//     its device, or in a search of "/" the home folder's, never entering tool caches,
//     version control, the Trash, packages, the user's Library or, for "/", the system's
//     virtual file systems and other disks' mount points). A folder whose name and
//     marker file say it is generated becomes a candidate and is not entered.
//  2. measuring: up to four workers measure the candidates, each walked whole by one
//     worker with its own visited-folder set and hard-link set (DevTreeMeasurer), then
//     checked to be unchanged. One dependency tree is one item, measured once.
// Every folder is opened relative to its parent's descriptor, so trees deeper than
// PATH_MAX are searched and measured.
//
// Contract: scan() is synchronous on the caller's thread (it adds its own workers) and
// returns nothing when the scope cannot be used or the search was cancelled, never a
// partial result. Progress is called from worker threads, at most every 0.25 s while
// discovering and 0.35 s while measuring, plus once as each phase starts and once at
// the end. A DevCleanupScanner is immutable and may run several searches at once.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "devcleanup/DevCleanupItem.hpp"
#include "devcleanup/DevCleanupKind.hpp"
#include "devcleanup/DevCleanupResult.hpp"
#include "devcleanup/DevCleanupScanPhase.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

// Called every 128 entries while a folder's contents are walked again.
using DevContentsProgress = std::function<void()>;

class DevCleanupScanner {
public:
    static constexpr size_t discoveryWorkers = 4;
    static constexpr size_t measuringWorkers = 4;

    // `home` is the user's home folder, standardized (its Library is never searched).
    explicit DevCleanupScanner(std::string home);
    DevCleanupScanner();  // the current user's home folder

    // Searches `folder` (made absolute and standardized; a link as the folder itself is
    // not followed, so callers that accept one resolve it first).
    std::optional<DevCleanupResult> scan(const std::string& folder,
                                         const ScanCancellation& cancellation,
                                         const DevCleanupScanProgress& progress = {}) const;

    // The kind of the folder at `path` named `name`, when its name and marker file say it
    // is a generated folder. Reads the file system (one or two existence checks).
    static std::optional<DevCleanupKind> kind(const std::string& path, std::string_view name);
    // The same for the folder `name` of the open folder `parentFd`.
    static std::optional<DevCleanupKind> kindAt(int parentFd, const std::string& name);

    // True when `item` is still the folder measured and its contents are exactly what
    // was measured: walked again, everything could be read, and bytes and fingerprint
    // are equal. Blocks for the whole walk.
    static bool stillMatchesContents(const DevCleanupItem& item,
                                     const DevContentsProgress& progress = {});
    // The same for the item reached as `name` of the open folder `parentFd`.
    static bool stillMatchesContentsAt(int parentFd, const std::string& name,
                                       const DevCleanupItem& item,
                                       const DevContentsProgress& progress = {});

private:
    std::string home_;
};

}  // namespace veldan
