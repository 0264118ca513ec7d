#pragma once
// Which folder a session watcher watches: the scope as given, the resolved folder that is
// actually watched, and for the startup disk the home folder's volume as a second
// location, each with the device and inode it had (read without following a final link).

#include <cstdint>
#include <optional>
#include <string>

#include "scan/FolderIdentity.hpp"

namespace veldan {

struct ScanRootIdentity {
    std::string path;
    FolderIdentity identity;
    std::string watchedPath;
    FolderIdentity watchedIdentity;
    std::optional<std::string> additionalWatchedPath;
    std::optional<FolderIdentity> additionalWatchedIdentity;

    // Nothing when the scope or its resolved folder cannot be read.
    static std::optional<ScanRootIdentity> read(const std::string& path);

    // Reads everything again: true only when each location still has its identity and the
    // scope still resolves to the watched folder.
    bool isUnchanged() const;

    friend bool operator==(const ScanRootIdentity&, const ScanRootIdentity&) = default;
};

}  // namespace veldan
