#pragma once
// The shared state of one hashing phase (sampling or verifying): hands candidates out one
// at a time to the phase's workers and collects their digests in candidate order.
//
// Contract: thread-safe; the progress callback is called after the lock is released.

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "duplicates/DuplicateScanPhase.hpp"
#include "platform/Sha256.hpp"

namespace veldan {

class DuplicateHashWork {
public:
    static constexpr double progressInterval = 0.25;

    // Reports (phase, 0, count) at once, so the start of a phase is always seen.
    DuplicateHashWork(size_t count, DuplicateScanPhase phase, DuplicateScanProgress progress);

    // The next candidate's index, or nothing once every candidate was handed out.
    std::optional<size_t> take();
    // Stores a candidate's digest (nothing when it could not be hashed) and reports
    // progress at most every 0.25 s and always for the last candidate.
    void finish(std::optional<platform::Sha256Digest> digest, size_t index);
    // The digests, one slot per candidate; call after every worker has returned.
    std::vector<std::optional<platform::Sha256Digest>> takeDigests();

private:
    std::mutex lock_;
    const size_t total_;
    const DuplicateScanPhase phase_;
    DuplicateScanProgress progress_;
    size_t nextIndex_ = 0;
    size_t completed_ = 0;
    double lastProgress_ = 0;
    std::vector<std::optional<platform::Sha256Digest>> digests_;
};

}  // namespace veldan
