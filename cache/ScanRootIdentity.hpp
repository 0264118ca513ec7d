#pragma once
// Which folder a session watcher watches: the scope as given, the resolved folder that is
// actually watched, and for the startup disk the home folder's volume as a second
// location, each with the device, inode and birth time it had (read without following a
// final link). The birth time matters: a folder deleted and recreated under the same path
// often gets the same inode number back, and a map of the old one must not be reused.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ItemIdentity.hpp"

namespace veldan {

struct ScanRootIdentity {
    std::string path;
    platform::ItemIdentity identity;
    std::string watchedPath;
    platform::ItemIdentity watchedIdentity;
    std::optional<std::string> additionalWatchedPath;
    std::optional<platform::ItemIdentity> additionalWatchedIdentity;

    // Nothing when the scope or its resolved folder cannot be read.
    static std::optional<ScanRootIdentity> read(const std::string& path);

    // Reads everything again: true only when each location still has its identity and the
    // scope still resolves to the watched folder.
    bool isUnchanged() const;

    // The same paths naming the same items; what changed inside them is the watcher's to
    // tell.
    friend bool operator==(const ScanRootIdentity& a, const ScanRootIdentity& b);
};

}  // namespace veldan
