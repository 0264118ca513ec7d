#pragma once
// The 20 largest files of a scan (100,000,000 bytes or more), bytes descending, ties by
// path ascending.
//
// Contract: shared by all scan workers; record() and files() take the collector's lock.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "scan/LargeFile.hpp"

namespace veldan {

class LargestFileCollector {
public:
    static constexpr int64_t minimumBytes = 100'000'000;
    static constexpr size_t limit = 20;

    void record(const std::string& path, int64_t bytes);
    std::vector<LargeFile> files() const;

private:
    mutable std::mutex mutex_;
    std::vector<LargeFile> files_;
};

}  // namespace veldan
