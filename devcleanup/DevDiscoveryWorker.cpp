#include "devcleanup/DevDiscoveryWorker.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "devcleanup/DevCleanupKind.hpp"
#include "platform/DirectoryReader.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

// A marker counts when something by that name exists, following a link as a plain
// existence check does; only a link needs the extra call.
bool markerExists(int folderFd, const platform::DirectoryEntryView& entry) {
    if (entry.type != DT_LNK && entry.type != DT_UNKNOWN) return true;
    return ::faccessat(folderFd, entry.name, F_OK, 0) == 0;
}

bool holdsMarkerInside(int folderFd, const DevCleanupKindRule& rule) {
    for (auto marker : rule.markers) {
        if (marker.empty()) continue;
        const std::string name(marker);
        if (::faccessat(folderFd, name.c_str(), F_OK, 0) == 0) return true;
    }
    return false;
}

// Errors that mean the entry is not a folder to search after all: a file or link whose
// listing gave no type, or one that went away since its parent was listed.
bool isNotAFolder(int error) {
    return error == ENOTDIR || error == ELOOP || error == ENOENT;
}

}  // namespace

DevDiscoveryWorker::DevDiscoveryWorker(DevDiscoveryState& state, const DevWalkRules& rules,
                                       const ScanCancellation& cancellation,
                                       const DevCleanupScanProgress& progress)
    : state_(state), rules_(rules), cancellation_(cancellation), progress_(progress) {}

void DevDiscoveryWorker::run() {
    while (auto folder = state_.takePath(cancellation_)) {
        search(std::move(*folder));
        state_.done();
    }
}

void DevDiscoveryWorker::search(DevQueuedFolder folder) {
    path_ = std::move(folder.path);
    enter(folder.parent, std::string(platform::lastPathComponent(path_)), folder.depth,
          folder.parentMarkers);
    folder.parent.reset();
    while (!chain_.empty()) {
        if (cancellation_.cancelled()) {
            chain_.clear();
            return;
        }
        Link& top = chain_.top();
        if (top.data.next < top.data.subfolders.size()) {
            const std::string name = std::move(top.data.subfolders[top.data.next++]);
            const SharedFd parent = top.fd;
            const int depth = top.data.depth + 1;
            const uint8_t markers = top.data.markers;
            const size_t parentLength = path_.size();
            if (path_.back() != '/') path_ += '/';
            path_ += name;
            if (!enter(parent, name, depth, markers)) path_.resize(parentLength);
            continue;
        }
        top.data.subfolders = {};
        if (!chain_.pop()) {
            state_.addUnreadable();
            chain_.top().data.next = chain_.top().data.subfolders.size();
        }
        if (!chain_.empty()) path_.resize(chain_.top().data.pathLength);
    }
}

bool DevDiscoveryWorker::enter(const SharedFd& parent, const std::string& name, int depth,
                               uint8_t parentMarkers) {
    if (rules_.skipsFolder(path_, name)) return false;
    int error = 0;
    platform::UniqueFd fd = platform::openDirectoryAt(parent->get(), name.c_str(), error);
    if (!fd) {
        if (!isNotAFolder(error)) state_.addUnreadable();
        return false;
    }
    const auto status = platform::statDescriptor(fd.get(), error);
    if (!status) {
        state_.addUnreadable();
        return false;
    }
    if (!rules_.allowsDevice(status->device)) return false;
    const auto visit = state_.visit(*status);
    if (!visit) return false;
    if (visit->shouldReport && progress_) {
        const auto phase = DevCleanupScanPhase::discovering;
        progress_(phase, devCleanupScanPhaseLabel(phase), visit->visited, visit->candidates);
    }
    if (const auto* rule = devCleanupRuleForFolder(name)) {
        const bool confirmed = rule->markerInside
                                   ? holdsMarkerInside(fd.get(), *rule)
                                   : (parentMarkers & devCleanupSiblingMarkerBits(*rule)) != 0;
        if (confirmed) {
            // Generated folders are never entered: what lies inside one is measured with
            // it, once.
            state_.add(DevCandidate::from(path_, rule->kind, *status));
            return false;
        }
    }
    chain_.push(std::make_shared<const platform::UniqueFd>(std::move(fd)),
                {status->device, status->inode}, Folder{{}, 0, path_.size(), depth, 0});
    list(chain_.top());
    return true;
}

void DevDiscoveryWorker::list(Link& folder) {
    const int fd = folder.fd->get();
    platform::DirectoryReader reader(fd, listing_);
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (entry.type == DT_DIR || entry.type == DT_UNKNOWN) {
            folder.data.subfolders.emplace_back(entry.name, entry.length);
        }
        const uint8_t bit = devCleanupSiblingMarkerBit({entry.name, entry.length});
        if (bit != 0 && markerExists(fd, entry)) folder.data.markers |= bit;
    }
    if (reader.error() != 0) state_.addUnreadable();
    // Only now are this folder's markers known, which its subfolders are recognised by.
    share(folder);
}

void DevDiscoveryWorker::share(Link& folder) {
    auto& subfolders = folder.data.subfolders;
    const int depth = folder.data.depth + 1;
    if (depth > DevDiscoveryState::sharedDepth) return;
    size_t shared = 0;
    while (shared < subfolders.size()) {
        DevQueuedFolder queued{folder.fd, platform::joinPath(path_, subfolders[shared]), depth,
                               folder.data.markers};
        if (!state_.offer(queued)) break;  // the queue is full: the rest stay here
        ++shared;
    }
    subfolders.erase(subfolders.begin(), subfolders.begin() + static_cast<ptrdiff_t>(shared));
}

}  // namespace veldan
