#include "activity/WidgetDigest.hpp"

#include <functional>

#include "activity/WidgetDigestCodec.hpp"
#include "activity/WidgetScope.hpp"
#include "platform/LockedFileUpdate.hpp"
#include "platform/Paths.hpp"
#include "platform/SerialQueue.hpp"
#include "platform/UserFolders.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

namespace {

// A digest is a few hundred bytes; anything this large is not one.
constexpr size_t maximumFileBytes = 1024 * 1024;

platform::SerialQueue& queue() {
    static platform::SerialQueue serial("com.veldan.widget-digest");
    return serial;
}

// Queues one load-change-write. `change` gets the digest on disk (nothing when there is
// none, or it is unreadable) and returns whether to write what it leaves in it.
void update(std::function<bool(std::optional<WidgetDigest>&)> change) {
    // The location is taken now: it follows the environment of the caller's moment.
    queue().async([path = WidgetDigest::filePath(), change = std::move(change)] {
        platform::LockedFileUpdateOptions options;
        options.maximumBytes = maximumFileBytes;
        platform::updateFileLocked(
            path,
            [&](const platform::LockedFileContents& current) -> std::optional<std::string> {
                std::optional<WidgetDigest> digest;
                if (current.state == platform::LockedFileContents::State::read) {
                    digest = WidgetDigestCodec::decode(current.bytes);
                }
                if (!change(digest) || !digest) return std::nullopt;
                return WidgetDigestCodec::encode(*digest);
            },
            options);
    });
}

bool touches(const std::string& scope, const std::vector<std::string>& paths) {
    if (scope.empty()) return !paths.empty();
    for (const auto& path : paths) {
        const std::string normalized = platform::absolutePath(path);
        if (platform::isSameOrUnder(normalized, scope) ||
            platform::isSameOrUnder(scope, normalized)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string WidgetDigest::filePath() {
    return platform::joinPath(platform::stateHome(), "Veldan/Widget/Gist.plist");
}

void WidgetDigest::markScanState(WidgetScanState state, const std::optional<std::string>& scope) {
    const auto now = Clock::now();
    update([=](std::optional<WidgetDigest>& digest) {
        if (!digest) digest = scope ? initial(*scope) : WidgetDigest{};
        digest->scanState = state;
        digest->scanStateChangedAt = now;
        if (state == WidgetScanState::scanning && scope) {
            digest->activeScanScopeName = WidgetScope::of(*scope).name;
        }
        return true;
    });
}

void WidgetDigest::refreshActiveScanHeartbeat() {
    const auto now = Clock::now();
    update([=](std::optional<WidgetDigest>& digest) {
        if (!digest || digest->scanState != WidgetScanState::scanning) return false;
        digest->scanStateChangedAt = now;
        return true;
    });
}

void WidgetDigest::markInterruptedScanStopped() {
    const auto now = Clock::now();
    update([=](std::optional<WidgetDigest>& digest) {
        if (!digest || digest->scanState != WidgetScanState::scanning) return false;
        digest->scanState = WidgetScanState::stopped;
        digest->scanStateChangedAt = now;
        return true;
    });
}

void WidgetDigest::markNeedsRefresh() {
    update([](std::optional<WidgetDigest>& digest) {
        if (!digest || digest->needsRefresh) return false;
        digest->needsRefresh = true;
        return true;
    });
}

void WidgetDigest::markNeedsRefresh(const std::vector<std::string>& affectedPaths) {
    update([affectedPaths](std::optional<WidgetDigest>& digest) {
        if (!digest || digest->needsRefresh || !touches(digest->scopePath, affectedPaths)) {
            return false;
        }
        digest->needsRefresh = true;
        return true;
    });
}

void WidgetDigest::updateMovedToTrashBytes(int64_t total) {
    update([total](std::optional<WidgetDigest>& digest) {
        if (!digest || digest->movedToTrashBytes == total) return false;
        digest->movedToTrashBytes = total;
        return true;
    });
}

void WidgetDigest::save(const WidgetDigest& complete) {
    update([complete](std::optional<WidgetDigest>& digest) {
        digest = complete;
        return true;
    });
}

void WidgetDigest::drain() {
    queue().drain();
}

std::optional<WidgetDigest> WidgetDigest::load() {
    auto current = platform::readStateFile(filePath(), maximumFileBytes);
    if (current.state != platform::LockedFileContents::State::read) return std::nullopt;
    return WidgetDigestCodec::decode(current.bytes);
}

WidgetDigest WidgetDigest::initial(const std::string& scope) {
    const WidgetScope named = WidgetScope::of(scope);
    WidgetDigest digest;
    digest.scopeName = named.name;
    digest.isStartupDisk = named.isStartupDisk;
    digest.isHomeFolder = named.isHomeFolder;
    digest.scopePath = named.path;
    if (auto volume = VolumeSpace::read(named.path)) {
        digest.freeBytes = volume->free;
        digest.totalBytes = volume->total;
    }
    return digest;
}

WidgetDigest WidgetDigest::forMap(const std::string& scope, const ScanSnapshot& snapshot,
                                  const std::vector<Recommendation>& recommendations,
                                  bool isSavedMap, bool needsRefresh, int64_t movedToTrashBytes) {
    WidgetDigest digest = initial(scope);
    // The scanner's own reading of the volume, from when the map was made, when it has one.
    if (snapshot.volume.total > 0) {
        digest.freeBytes = snapshot.volume.free;
        digest.totalBytes = snapshot.volume.total;
    }
    digest.mappedBytes = snapshot.root.bytes;
    std::vector<std::string> safePaths;
    for (const auto& recommendation : recommendations) {
        if (recommendation.kind == RecommendationKind::safe) {
            ++digest.safeCount;
            safePaths.insert(safePaths.end(), recommendation.paths.begin(),
                             recommendation.paths.end());
        } else {
            ++digest.reviewCount;
        }
    }
    digest.safeBytes =
        RecommendationBuilder::footprint(safePaths, {}, snapshot.discoveredDirectories);
    digest.scannedAt = snapshot.finishedAt;
    digest.unreadableItems = snapshot.unreadableItems;
    digest.needsRefresh = needsRefresh;
    digest.isSavedMap = isSavedMap;
    digest.hasCompletedScan = true;
    digest.movedToTrashBytes = movedToTrashBytes;
    return digest;
}

std::optional<WidgetScanState> WidgetDigest::shownScanState(Clock::time_point now) const {
    if (scanState != WidgetScanState::scanning) return scanState;
    // A heartbeat from the future (the clock was set back) is judged like a missing one:
    // nothing proves the scan is still alive.
    if (!scanStateChangedAt || *scanStateChangedAt > now + staleHeartbeat ||
        now - *scanStateChangedAt > staleHeartbeat) {
        return WidgetScanState::stopped;
    }
    return scanState;
}

}  // namespace veldan
