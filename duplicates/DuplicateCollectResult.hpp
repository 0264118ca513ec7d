#pragma once
// The scanner's private records for the collection phase. Not for use outside the
// duplicate scanner.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "duplicates/DuplicateFile.hpp"

namespace veldan {

// Device and inode: several paths that reach one inode share it.
struct DuplicateIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
    friend bool operator==(const DuplicateIdentity&, const DuplicateIdentity&) = default;
};

struct DuplicateIdentityHash {
    size_t operator()(const DuplicateIdentity& id) const noexcept {
        return std::hash<uint64_t>{}(id.inode * 0x9E3779B97F4A7C15ULL ^ id.device);
    }
};

struct DuplicateCandidate {
    DuplicateFile file;
};

// Every file of one exact size. A bucket whose `others` stays empty is a unique size and
// its file is never read.
struct DuplicateSizeBucket {
    DuplicateCandidate first;
    std::vector<DuplicateCandidate> others;
};

// What one collection worker found; each worker owns its own, so building buckets takes
// no lock.
struct DuplicateCollectResult {
    std::unordered_map<int64_t, DuplicateSizeBucket> bySize;
    int64_t filesVisited = 0;  // regular files of any size
    int64_t unreadable = 0;    // entries that could not be read

    void add(DuplicateFile file);
    // Moves everything of `other` in: its buckets' files join ours; counts are summed.
    void merge(DuplicateCollectResult&& other);
};

}  // namespace veldan
