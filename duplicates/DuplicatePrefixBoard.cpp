#include "duplicates/DuplicatePrefixBoard.hpp"

#include <algorithm>
#include <cstring>

namespace veldan {

DuplicatePrefixBoard::DuplicatePrefixBoard(const std::vector<size_t>& groupSizes) {
    for (const size_t size : groupSizes) {
        const size_t begin = candidates_.size();
        for (size_t i = 0; i < size; ++i) {
            Candidate candidate;
            candidate.groupBegin = begin;
            candidate.groupEnd = begin + size;
            candidates_.push_back(std::move(candidate));
        }
    }
}

bool DuplicatePrefixBoard::post(size_t index, const platform::Sha256Digest& prefix) {
    uint64_t tag = 0;
    std::memcpy(&tag, prefix.data(), sizeof tag);
    std::lock_guard guard(lock_);
    Candidate& candidate = candidates_[index];
    candidate.tags.push_back(tag);
    if (mayMatch(candidate, index)) return true;
    candidate.stopped = true;
    candidate.dropped = true;
    return false;
}

// Another candidate may still match when it has not been dropped and agrees with this one
// at the latest chunk both have read, or has read nothing yet.
bool DuplicatePrefixBoard::mayMatch(const Candidate& candidate, size_t index) const {
    for (size_t other = candidate.groupBegin; other < candidate.groupEnd; ++other) {
        if (other == index || candidates_[other].dropped) continue;
        const auto& tags = candidates_[other].tags;
        const size_t common = std::min(tags.size(), candidate.tags.size());
        if (common == 0 || tags[common - 1] == candidate.tags[common - 1]) return true;
    }
    return false;
}

void DuplicatePrefixBoard::drop(size_t index) {
    std::lock_guard guard(lock_);
    candidates_[index].dropped = true;
}

bool DuplicatePrefixBoard::stopped(size_t index) const {
    std::lock_guard guard(lock_);
    return candidates_[index].stopped;
}

}  // namespace veldan
