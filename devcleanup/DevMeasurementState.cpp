#include "devcleanup/DevMeasurementState.hpp"

#include <utility>

#include "platform/Uptime.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

DevMeasurementState::DevMeasurementState(size_t count)
    : results_(count), lastProgress_(platform::uptimeSeconds()) {}

std::optional<size_t> DevMeasurementState::take() {
    std::lock_guard guard(lock_);
    if (nextIndex_ >= results_.size()) return std::nullopt;
    return nextIndex_++;
}

int64_t DevMeasurementState::finish(size_t index, std::optional<DevCleanupItem> item,
                                    int64_t unreadable) {
    std::lock_guard guard(lock_);
    results_[index] = std::move(item);
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
    Snapshot snapshot;
    snapshot.unreadable = unreadableCount_;
    snapshot.items.reserve(results_.size());
    for (auto& result : results_) {
        if (result) snapshot.items.push_back(std::move(*result));
    }
    results_ = {};
    return snapshot;
}

}  // namespace veldan
