#pragma once
// Where a search for generated folders may go: the devices it stays on and the folders it
// never enters (tool caches, version control, the Trash, application and library
// packages, the user's Library, and in a search of the whole startup disk the system's
// virtual file systems and the mount points of other disks).
//
// Contract: immutable after construction; safe to share between workers.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace veldan {

class DevWalkRules {
public:
    // Folder names never entered, anywhere.
    static bool isSkippedName(std::string_view name);
    // Folders whose lower-cased extension marks an application or library package.
    static bool isSkippedPackage(std::string_view name);
    // Paths skipped when the search covers the whole startup disk, "/".
    static bool isStartupDiskSkippedRoot(std::string_view path);

    // Rules for a search of `scope` (absolute, standardized) on the device `scopeDevice`.
    // A search of "/" also enters the home folder's device. `home` is the home folder.
    DevWalkRules(const std::string& scope, uint64_t scopeDevice, const std::string& home);

    bool allowsDevice(uint64_t device) const;
    // True for a folder at `path`, named `name`, that the search must not enter.
    bool skipsFolder(std::string_view path, std::string_view name) const;

private:
    bool wholeDisk_ = false;
    std::vector<uint64_t> devices_;
    std::string homeLibrary_;
    std::vector<std::string> trashFolders_;
};

}  // namespace veldan
