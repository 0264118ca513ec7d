#pragma once
// The work shared by the measuring workers of one search: which candidate comes next,
// what each one measured, and when progress is due.
//
// Contract: every member is thread-safe (one lock); nothing calls out under it.

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "devcleanup/DevCleanupItem.hpp"

namespace veldan {

class DevMeasurementState {
public:
    static constexpr double progressInterval = 0.35;

    explicit DevMeasurementState(size_t count);

    // The index of the next candidate to measure; nothing once all are handed out.
    std::optional<size_t> take();
    // Stores what candidate `index` gave: an item, or nothing when it changed while it
    // was measured. Answers the number of candidates finished so far.
    int64_t finish(size_t index, std::optional<DevCleanupItem> item, int64_t unreadable);
    // The number finished so far when a report is due (0.35 s since the last one).
    std::optional<int64_t> dueReport();

    struct Snapshot {
        std::vector<DevCleanupItem> items;  // in candidate order
        int64_t unreadable = 0;
    };
    // After every worker has returned.
    Snapshot snapshot();

private:
    std::mutex lock_;
    size_t nextIndex_ = 0;
    // One slot per candidate, filled in place, and which slots hold an item: with a
    // hundred thousand candidates, the items are never held twice.
    std::vector<DevCleanupItem> results_;
    std::vector<char> measured_;
    int64_t unreadableCount_ = 0;
    int64_t completed_ = 0;
    double lastProgress_ = 0;
};

}  // namespace veldan
