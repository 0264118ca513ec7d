#include "devcleanup/DevMeasurementState.hpp"

#include <utility>

#include "platform/Uptime.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

DevMeasurementState::DevMeasurementState(size_t count)
    : results_(count), measured_(count, 0), lastProgress_(platform::uptimeSeconds()) {}

std::optional<size_t> DevMeasurementState::take() {
    std::lock_guard guard(lock_);
    if (nextIndex_ >= results_.size()) return std::nullopt;
    return nextIndex_++;
}

int64_t DevMeasurementState::finish(size_t index, std::optional<DevCleanupItem> item,
                                    int64_t unreadable) {
    std::lock_guard guard(lock_);
    if (item) {
        results_[index] = std::move(*item);
        measured_[index] = 1;
    }
    unreadableCount_ = saturatingAdd(unreadableCount_, unreadable);
    return ++completed_;
}

std::optional<int64_t> DevMeasurementState::dueReport() {
    const double now = platform::uptimeSeconds();
    std::lock_guard guard(lock_);
    if (now - lastProgress_ < progressInterval) return std::nullopt;
    lastProgress_ = now;
    return completed_;
}

DevMeasurementState::Snapshot DevMeasurementState::snapshot() {
    std::lock_guard guard(lock_);
    size_t kept = 0;
    for (size_t i = 0; i < results_.size(); ++i) {
        if (!measured_[i]) continue;
        if (kept != i) results_[kept] = std::move(results_[i]);
        ++kept;
    }
    results_.resize(kept);
    measured_ = {};
    return Snapshot{std::move(results_), unreadableCount_};
}

}  // namespace veldan
