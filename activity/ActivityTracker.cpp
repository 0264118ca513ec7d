#include "activity/ActivityTracker.hpp"

#include "activity/ActivityArchiveCodec.hpp"
#include "activity/WidgetDigest.hpp"
#include "platform/LockedFileUpdate.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "platform/UserFolders.hpp"
#include "platform/Uuid.hpp"

namespace veldan {

namespace {

using State = platform::LockedFileContents::State;

// The file keeps dates to the microsecond; so does the history in memory, so that it is
// the same before and after a write.
ActivityTracker::Clock::time_point storable(ActivityTracker::Clock::time_point time) {
    return std::chrono::floor<std::chrono::microseconds>(time);
}

using Status = DecodedActivityArchive::Status;

DecodedActivityArchive readArchive(const std::string& path) {
    const auto current =
        platform::readStateFile(path, platform::LockedFileUpdateOptions{}.maximumBytes);
    if (current.state == State::missing) return {Status::current, {}};
    if (current.state == State::unreadable) return {};
    return ActivityArchiveCodec::decode(current.bytes);
}

}  // namespace

std::string ActivityTracker::defaultArchivePath() {
    return platform::joinPath(platform::stateHome(), "Veldan/Activity.plist");
}

ActivityTracker& ActivityTracker::shared() {
    // The digest's queue is made first so that it is torn down after the tracker at exit:
    // the tracker's last writes may still tell the digest the new total. Destroying the
    // tracker at exit joins its thread, which lets the libraries it used free what they
    // keep per thread.
    static ActivityTracker& tracker = []() -> ActivityTracker& {
        WidgetDigest::drain();
        static ActivityTracker made;
        return made;
    }();
    return tracker;
}

ActivityTracker::ActivityTracker(std::string archivePath) : path_(std::move(archivePath)) {
    history_ = readArchive(path_).archive;
    lastKnown_ = history_;
}

ActivityTracker::~ActivityTracker() {
    queue_.drain();
}

ActivityArchive ActivityTracker::history() const {
    std::lock_guard lock(mutex_);
    return history_;
}

void ActivityTracker::reload() {
    // Serialised with the writes, so that the file read is not one being replaced by them
    // and lastKnown_ stays the queue's.
    queue_.async([this] {
        auto decoded = readArchive(path_);
        {
            std::lock_guard lock(mutex_);
            if (decoded.status != Status::damaged) lastKnown_ = decoded.archive;
            history_ = lastKnown_;
            for (const auto& pending : pending_)
                pending.change(history_);
        }
        notify();
    });
    queue_.drain();
}

void ActivityTracker::recordScan(const ScanSnapshot& snapshot,
                                 std::vector<TrackedDownload> downloads,
                                 Clock::time_point checkedAt) {
    checkedAt = storable(checkedAt);
    std::optional<ActivitySnapshot> day;
    // Only the startup disk makes history; any other folder's free space says nothing
    // about the disk over time.
    if (snapshot.root.path == "/") {
        day = ActivitySnapshot{checkedAt, snapshot.volume.free, snapshot.root.bytes,
                               snapshot.unreadableItems};
    }
    change([day, downloads = std::move(downloads), checkedAt](ActivityArchive& archive) {
        archive.recordScan(day, downloads, checkedAt);
    });
}

void ActivityTracker::recordTrash(const std::string& title, int64_t bytes, int64_t count) {
    if (count < 1) return;
    CleanupActivity activity{platform::randomUuid(),
                             storable(Clock::now()),
                             title,
                             CleanupActivity::Kind::movedToTrash,
                             bytes,
                             count};
    change([activity](ActivityArchive& archive) { archive.recordCleanup(activity); }, true);
}

void ActivityTracker::recordToolCleanup(const std::string& title, int64_t count) {
    if (count < 1) return;
    CleanupActivity activity{platform::randomUuid(),
                             storable(Clock::now()),
                             title,
                             CleanupActivity::Kind::toolCleanup,
                             0,
                             count};
    change([activity](ActivityArchive& archive) { archive.recordCleanup(activity); });
}

DownloadMoveOutcome ActivityTracker::moveDownloadToTrash(const TrackedDownload& download,
                                                         const ChangedPathsSink& changed) {
    {
        std::lock_guard lock(mutex_);
        movingDownload_ = true;
        moveError_.reset();
    }
    notify();
    auto outcome = DownloadInventory::moveToTrash(download);
    if (outcome.moved) {
        if (changed) changed({download.path});
        change([path = download.path](ActivityArchive& archive) { archive.removeDownload(path); });
        recordTrash(std::string(platform::lastPathComponent(download.path)), download.bytes, 1);
    }
    {
        std::lock_guard lock(mutex_);
        movingDownload_ = false;
        if (!outcome.moved) moveError_ = outcome.reason;
    }
    notify();
    return outcome;
}

bool ActivityTracker::dailyEnabled() const {
    return platform::Preferences::boolean(dailyPreferenceKey).value_or(false);
}

bool ActivityTracker::setDailyEnabled(bool enabled) {
    const bool written = platform::Preferences::setBoolean(dailyPreferenceKey, enabled);
    notify();
    return written;
}

bool ActivityTracker::isDailyCheckDue(Clock::time_point now) const {
    if (isChecking() || !dailyEnabled()) return false;
    const auto last = history().lastDailyCheckAt;
    if (!last) return true;
    return now - *last >= dailyInterval || *last - now > dailyInterval;
}

bool ActivityTracker::isChecking() const {
    std::lock_guard lock(mutex_);
    return checking_;
}

void ActivityTracker::setChecking(bool checking) {
    {
        std::lock_guard lock(mutex_);
        checking_ = checking;
    }
    notify();
}

bool ActivityTracker::isMovingDownload() const {
    std::lock_guard lock(mutex_);
    return movingDownload_;
}

std::optional<std::string> ActivityTracker::moveError() const {
    std::lock_guard lock(mutex_);
    return moveError_;
}

void ActivityTracker::setObserver(std::function<void()> observer) {
    std::lock_guard lock(mutex_);
    observer_ = std::move(observer);
}

void ActivityTracker::drain() {
    queue_.drain();
}

void ActivityTracker::change(std::function<void(ActivityArchive&)> apply, bool tellsWidget) {
    {
        std::lock_guard lock(mutex_);
        apply(history_);
        pending_.push_back({nextSequence_++, std::move(apply), tellsWidget});
    }
    notify();
    queue_.async([this] { write(); });
}

void ActivityTracker::write() {
    std::vector<Pending> batch;
    {
        std::lock_guard lock(mutex_);
        batch = pending_;
    }
    if (batch.empty()) return;  // an earlier write took them along
    ActivityArchive merged;
    bool writable = true;
    const auto failure = platform::updateFileLocked(
        path_, [&](const platform::LockedFileContents& current) -> std::optional<std::string> {
            DecodedActivityArchive decoded;
            if (current.state == State::missing) {
                decoded.status = Status::current;
            } else if (current.state == State::read) {
                decoded = ActivityArchiveCodec::decode(current.bytes);
            }
            // A damaged file is rebuilt from the last history this process knew whole,
            // which is better than what still decodes of it.
            merged = decoded.status == Status::damaged ? lastKnown_ : std::move(decoded.archive);
            for (const auto& pending : batch)
                pending.change(merged);
            writable = decoded.status != Status::newer;
            if (!writable) return std::nullopt;
            return ActivityArchiveCodec::encode(merged);
        });
    const bool written = writable && !failure;
    bool tellWidget = false;
    int64_t total = 0;
    {
        std::lock_guard lock(mutex_);
        if (written) {
            lastKnown_ = merged;
            std::erase_if(pending_,
                          [&](const Pending& p) { return p.sequence <= batch.back().sequence; });
        }
        if (written || !writable) {
            // The history now holds what other processes recorded too; changes made
            // while this write ran stay on top of it.
            history_ = merged;
            for (const auto& pending : pending_) {
                if (pending.sequence > batch.back().sequence) pending.change(history_);
            }
        }
        for (const auto& pending : batch)
            tellWidget = tellWidget || pending.tellsWidget;
        total = history_.totalMovedToTrashBytes;
    }
    if (tellWidget) WidgetDigest::updateMovedToTrashBytes(total);
    notify();
}

void ActivityTracker::notify() {
    std::function<void()> observer;
    {
        std::lock_guard lock(mutex_);
        observer = observer_;
    }
    if (observer) observer();
}

}  // namespace veldan
