#pragma once
// One recent file in the Downloads folder, as listed by DownloadInventory, with what a
// later move needs to prove that the file is still the one the user saw listed.

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/FileStatus.hpp"

namespace veldan {

struct TrackedDownload {
    using Clock = std::chrono::system_clock;
    // "Very large" in the review hint: one gigabyte or more.
    static constexpr int64_t veryLargeBytes = 1'000'000'000;
    static constexpr std::chrono::hours installerReviewAge{24 * 7};

    std::string path;
    int64_t bytes = 0;             // allocated size: 512-byte blocks times 512
    Clock::time_point addedAt;     // birth time, else the change time
    Clock::time_point modifiedAt;  // both kept to the microsecond, as the record stores them
    uint64_t device = 0;
    uint64_t inode = 0;
    // Exact values for the check before a move. Lists recorded without them (zero) are
    // checked at the precision of the dates above.
    int64_t size = 0;             // logical bytes
    platform::Timestamp created;  // zero when the file system keeps no birth time
    platform::Timestamp modified;

    // By file name: the package and installer formats people download.
    bool isInstaller() const;
    bool isVeryLarge() const { return bytes >= veryLargeBytes; }
    // Marked with the review hint "· installers older than a week or very large files".
    bool wantsReview(Clock::time_point now) const;

    // The record of a regular file at `path` with status `status`.
    static TrackedDownload of(const std::string& path, const platform::FileStatus& status);
    // Whether `now`, a fresh status of the same path, shows the very file listed, with
    // the same size and modification time.
    bool isUnchanged(const platform::FileStatus& now) const;

    friend bool operator==(const TrackedDownload&, const TrackedDownload&) = default;
};

}  // namespace veldan
