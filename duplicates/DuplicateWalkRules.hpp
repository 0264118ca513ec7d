#pragma once
// Where a duplicate search may go: the devices it stays on and the folders it never
// enters (application and media packages, the Trash, and in a scan of "/" the paths that
// reach other volumes).
//
// Contract: immutable after construction; safe to share between workers.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace veldan {

class DuplicateWalkRules {
public:
    // Lower-case folder extensions that are never entered: their contents belong to an
    // application or a library and must not be touched one file at a time.
    static bool isSkippedPackage(std::string_view lowercaseExtension);

    // Rules for a search of `root` (standardized), whose own device is `rootDevice`. A
    // search of "/" also enters the home folder's device.
    DuplicateWalkRules(const std::string& root, uint64_t rootDevice);

    bool rootScan() const { return rootScan_; }
    bool allowsDevice(uint64_t device) const;
    // True for a folder at `path` (last component `name`) that the walk must not enter.
    // `parentFd` is the open folder that holds it; it is asked (two status calls) only
    // about a folder named like a volume's trash.
    bool skipsDirectory(std::string_view path, std::string_view name, int parentFd) const;

private:
    bool rootScan_ = false;
    std::vector<uint64_t> devices_;
    std::vector<std::string> trashFolders_;
};

}  // namespace veldan
