#pragma once
// The outcome of one finished scan. Field names are also the serialisation keys.

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "scan/DiskNode.hpp"
#include "scan/LargeFile.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

struct ScanSnapshot {
    DiskNode root;
    VolumeSpace volume;  // {0, 0} when the capacity could not be read
    std::map<std::string, int64_t> discoveredDirectories;
    std::vector<LargeFile> largestFiles;  // at most 20, bytes descending, then path
    int64_t visitedFolderCount = 0;
    int64_t visitedFileCount = 0;
    int64_t unreadableItems = 0;
    std::vector<std::string> unreadablePaths;
    std::optional<std::map<std::string, std::string>> unreadableReasons;
    int64_t skippedPhotosLibraries = 0;
    int64_t skippedMusicLibraries = 0;
    std::chrono::system_clock::time_point finishedAt;

    friend bool operator==(const ScanSnapshot&, const ScanSnapshot&) = default;
};

}  // namespace veldan
