#include "duplicates/DuplicateHashWork.hpp"

#include <utility>

#include "platform/Uptime.hpp"

namespace veldan {

DuplicateHashWork::DuplicateHashWork(size_t count, DuplicateScanPhase phase,
                                     DuplicateScanProgress progress)
    : total_(count),
      phase_(phase),
      progress_(std::move(progress)),
      lastProgress_(platform::uptimeSeconds()),
      digests_(count) {
    if (progress_) progress_(phase_, 0, static_cast<int64_t>(total_));
}

std::optional<size_t> DuplicateHashWork::take() {
    std::lock_guard guard(lock_);
    if (nextIndex_ >= total_) return std::nullopt;
    return nextIndex_++;
}

void DuplicateHashWork::finish(std::optional<platform::Sha256Digest> digest, size_t index) {
    size_t completed = 0;
    {
        std::lock_guard guard(lock_);
        digests_[index] = digest;
        completed = ++completed_;
        const double now = platform::uptimeSeconds();
        if (completed != total_ && now - lastProgress_ < progressInterval) return;
        lastProgress_ = now;
    }
    if (progress_) {
        progress_(phase_, static_cast<int64_t>(completed), static_cast<int64_t>(total_));
    }
}

std::vector<std::optional<platform::Sha256Digest>> DuplicateHashWork::takeDigests() {
    std::lock_guard guard(lock_);
    return std::move(digests_);
}

}  // namespace veldan
