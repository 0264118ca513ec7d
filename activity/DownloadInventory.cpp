#include "activity/DownloadInventory.hpp"

#include <algorithm>

#include "platform/DirectoryReader.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

DownloadMoveOutcome refused(std::string reason) {
    return DownloadMoveOutcome{false, {}, std::move(reason)};
}

std::chrono::system_clock::time_point latest(const TrackedDownload& download) {
    return std::max(download.addedAt, download.modifiedAt);
}

}  // namespace

std::string DownloadInventory::folder() {
    return platform::resolveSymlinks(platform::downloadsFolder());
}

std::vector<TrackedDownload> DownloadInventory::collect(Clock::time_point now,
                                                        const std::string& downloads) {
    const std::string root = downloads.empty() ? folder() : downloads;
    int error = 0;
    const platform::UniqueFd fd = platform::openDirectory(root, error);
    if (!fd) return {};
    const auto cutoff = now - window;
    std::vector<TrackedDownload> found;
    std::vector<char> buffer;
    platform::DirectoryReader reader(fd.get(), buffer);
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (entry.name[0] == '.') continue;
        auto status = platform::statAt(fd.get(), entry.name, false, error);
        if (!status || !status->isRegularFile()) continue;
        auto download = TrackedDownload::of(
            platform::joinPath(root, std::string(entry.name, entry.length)), *status);
        if (download.addedAt >= cutoff || download.modifiedAt >= cutoff) {
            found.push_back(std::move(download));
        }
    }
    std::sort(found.begin(), found.end(), [](const TrackedDownload& a, const TrackedDownload& b) {
        if (latest(a) != latest(b)) return latest(a) > latest(b);
        return a.path < b.path;
    });
    if (found.size() > maximumCount) found.resize(maximumCount);
    return found;
}

DownloadMoveOutcome DownloadInventory::moveToTrash(const TrackedDownload& download) {
    const std::string path = platform::standardizePath(download.path);
    if (path.empty() || path.front() != '/' || platform::lastPathComponent(path).empty() ||
        platform::parentPath(path) != folder()) {
        return refused(notInsideReason);
    }
    auto status = platform::statPath(path, false);
    if (!status || !download.isUnchanged(*status)) return refused(changedReason);
    // The Trash checks the file once more right before the rename, to the nanosecond of
    // its times, through a parent folder it opened without following links: nothing
    // swapped in or written after this check can move instead.
    const auto outcome = platform::Trash::moveItem(
        path, {platform::ItemIdentity::of(*status), platform::IdentityCheck::unchanged});
    if (outcome.moved) return DownloadMoveOutcome{true, outcome.trashedPath, {}};
    switch (outcome.refusal) {
        case platform::TrashRefusal::redirected:
            return refused(notInsideReason);
        case platform::TrashRefusal::missing:
        case platform::TrashRefusal::changed:
            return refused(changedReason);
        default:
            return refused(outcome.reason);
    }
}

}  // namespace veldan
