#pragma once
// Where the verifying workers post how far each candidate's content agrees with the other
// candidates of its sample group, so that a file shown to differ from every file it could
// still match stops being read. Files of one size whose samples agree but whose contents
// differ (disk images, fixed-size databases) then cost the reads up to their first
// difference rather than their whole length; files that are copies are still read whole.
//
// After every chunk a worker posts a tag of the digest of everything read so far. Such a
// digest covers the whole prefix, so two candidates whose tags differ at one chunk differ
// at every later one, and one comparison at the latest chunk both have read tells whether
// they still agree. A tag is the digest's first 8 bytes: a collision only lets a read go
// on, it never stops one.
//
// Contract: thread-safe (one lock); candidates are numbered in verifying order, each
// group's candidates next to each other. A candidate is posted for by one worker at a time.

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/Sha256.hpp"

namespace veldan {

class DuplicatePrefixBoard {
public:
    // `groupSizes` in verifying order: the first group's candidates are 0 to size - 1, and
    // so on.
    explicit DuplicatePrefixBoard(const std::vector<size_t>& groupSizes);

    // Candidate `index` has read one more chunk; `prefix` is the digest of all it read.
    // False when no other candidate of its group can still have the same content: the
    // candidate is then stopped and its read must end.
    bool post(size_t index, const platform::Sha256Digest& prefix);
    // Candidate `index` ended without a full digest (a failed read or a stop): it can no
    // longer match anything.
    void drop(size_t index);
    // True for a candidate that post() stopped, as opposed to one whose read failed.
    bool stopped(size_t index) const;

private:
    struct Candidate {
        size_t groupBegin = 0;
        size_t groupEnd = 0;
        std::vector<uint64_t> tags;  // one per chunk read
        bool dropped = false;
        bool stopped = false;
    };

    bool mayMatch(const Candidate& candidate, size_t index) const;

    mutable std::mutex lock_;
    std::vector<Candidate> candidates_;
};

}  // namespace veldan
