#pragma once
// One day's free-space figure of the startup disk, recorded by a complete scan of "/"
// or by the daily check.

#include <chrono>
#include <cstdint>

namespace veldan {

struct ActivitySnapshot {
    std::chrono::system_clock::time_point checkedAt;
    int64_t freeBytes = 0;    // free space of the startup volume
    int64_t mappedBytes = 0;  // bytes the scan mapped
    int64_t unreadableItems = 0;

    friend bool operator==(const ActivitySnapshot&, const ActivitySnapshot&) = default;
};

}  // namespace veldan
