#include "activity/TrackedDownload.hpp"

#include <array>
#include <string_view>

#include "platform/Paths.hpp"

namespace veldan {

namespace {

using namespace std::chrono;

// Debian, Fedora and the portable Linux formats first, then what people download for
// other systems and keep around by mistake.
constexpr std::array<std::string_view, 11> installerExtensions = {
    "deb", "rpm", "appimage", "flatpak", "flatpakref", "snap", "run", "dmg", "pkg", "exe", "msi"};

system_clock::time_point toMicroseconds(const platform::Timestamp& time) {
    // Floored, so that the value read back from the record equals the one listed.
    return floor<microseconds>(system_clock::time_point(duration_cast<system_clock::duration>(
        seconds(time.seconds) + nanoseconds(time.nanoseconds))));
}

bool isZero(const platform::Timestamp& time) {
    return time.seconds == 0 && time.nanoseconds == 0;
}

}  // namespace

bool TrackedDownload::isInstaller() const {
    const std::string extension = platform::pathExtension(path);
    for (auto known : installerExtensions) {
        if (extension == known) return true;
    }
    return false;
}

bool TrackedDownload::wantsReview(Clock::time_point now) const {
    return isVeryLarge() || (isInstaller() && now - addedAt >= installerReviewAge);
}

TrackedDownload TrackedDownload::of(const std::string& path, const platform::FileStatus& status) {
    TrackedDownload download;
    download.path = path;
    download.bytes = status.blocks > INT64_MAX / 512 ? INT64_MAX : status.blocks * 512;
    download.addedAt = toMicroseconds(isZero(status.created) ? status.changed : status.created);
    download.modifiedAt = toMicroseconds(status.modified);
    download.device = status.device;
    download.inode = status.inode;
    download.size = status.size;
    download.created = status.created;
    download.modified = status.modified;
    return download;
}

bool TrackedDownload::isUnchanged(const platform::FileStatus& now) const {
    if (!now.isRegularFile()) return false;
    const TrackedDownload fresh = of(path, now);
    if (fresh.device != device || fresh.inode != inode || fresh.bytes != bytes ||
        fresh.addedAt != addedAt || fresh.modifiedAt != modifiedAt) {
        return false;
    }
    // A list recorded with the exact values is held to them; birth time tells a new file
    // that reuses the inode number from the one listed.
    const bool exact = size != 0 || !isZero(modified);
    return !exact || (fresh.size == size && fresh.created == created && fresh.modified == modified);
}

}  // namespace veldan
