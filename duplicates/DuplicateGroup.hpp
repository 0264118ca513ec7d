#pragma once
// A set of files whose size and full SHA-256 agree, and the result of one search.

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "duplicates/DuplicateFile.hpp"
#include "platform/Sha256.hpp"

namespace veldan {

struct DuplicateGroup {
    std::string id;                    // decimal bytesPerFile, "-", standard Base64 of digest
    std::vector<DuplicateFile> files;  // at least two, in Finder order of their paths
    int64_t bytesPerFile = 0;
    platform::Sha256Digest digest{};

    // bytesPerFile x (copies - 1), saturating: the bytes held by every copy but one.
    int64_t extraBytes() const;
};

struct DuplicateScanResult {
    std::string revision;                // fresh per result, so views and caches notice a new one
    std::vector<DuplicateGroup> groups;  // most extra bytes first, then id ascending
    int64_t filesVisited = 0;
    int64_t unreadableFiles = 0;
    std::string scope;  // the scanned folder
    std::chrono::system_clock::time_point scannedAt;
    int64_t extraBytes = 0;  // sum of the groups' extra bytes, saturating
    std::unordered_map<std::string, int64_t> fileBytesByPath;
};

}  // namespace veldan
