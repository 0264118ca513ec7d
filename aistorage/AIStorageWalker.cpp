#include "aistorage/AIStorageWalker.hpp"

#include <dirent.h>

#include <cerrno>
#include <utility>

#include "platform/DirectoryReader.hpp"
#include "platform/DirectoryWithoutLinks.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

// How often, in entries, a long walk reports and looks at the cancellation.
constexpr int64_t reportEvery = 4096;

int64_t allocatedBytes(const platform::FileStatus& status) {
    constexpr int64_t largestBlocks = INT64_MAX / 512;
    return status.blocks > largestBlocks ? INT64_MAX : status.blocks * 512;
}

bool isGone(int error) {
    // Removed since it was listed, or replaced by a link or a file: nothing to measure,
    // and nothing the user could not read.
    return error == ENOENT || error == ELOOP || error == ENOTDIR;
}

}  // namespace

AIStorageWalker::AIStorageWalker(EntriesSink entries) : entries_(std::move(entries)) {}

bool AIStorageWalker::count() {
    if (++pendingEntries_ < reportEvery) return true;
    const int64_t pending = std::exchange(pendingEntries_, 0);
    return !entries_ || entries_(pending);
}

bool AIStorageWalker::measure(AIStorageLocation& location,
                              const std::unordered_set<std::string>& excluded) {
    location.bytes = 0;
    location.fingerprint.reset();
    location.isLinkedPath = false;
    int error = 0;
    const auto status = platform::statPath(location.path, false, error);
    if (!status) {
        location.status = error == ENOENT || error == ENOTDIR ? AIStorageStatus::missing
                                                              : AIStorageStatus::unreadable;
        return true;
    }
    if (status->isSymbolicLink() || platform::resolveSymlinks(location.path) != location.path) {
        location.status = AIStorageStatus::linked;
        location.isLinkedPath = true;
        return true;
    }
    location.status = AIStorageStatus::measured;
    if (!status->isDirectory()) {
        location.bytes = status->isRegularFile() ? allocatedBytes(*status) : 0;
        return true;
    }
    // Opened one component at a time without following links: a folder on the way that
    // became a link since the check above is still never followed.
    platform::UniqueFd root = platform::openDirectoryWithoutLinks(location.path, error);
    const auto rootStatus = root ? platform::statDescriptor(root.get(), error) : std::nullopt;
    if (!rootStatus) {
        if (error == ELOOP || error == ENOTDIR) {
            location.status = AIStorageStatus::linked;
            location.isLinkedPath = true;
        } else {
            location.status =
                error == ENOENT ? AIStorageStatus::missing : AIStorageStatus::unreadable;
        }
        return true;
    }
    location.fingerprint = platform::ItemIdentity::of(*rootStatus);
    path_ = location.path;
    device_ = rootStatus->device;
    const FolderIdentity identity{rootStatus->device, rootStatus->inode};
    seenFolders_.insert(identity);
    const bool finished = walk(std::move(root), identity, location.bytes, excluded);
    const int64_t pending = std::exchange(pendingEntries_, 0);
    return finished && (!entries_ || entries_(pending));
}

bool AIStorageWalker::walk(platform::UniqueFd root, const FolderIdentity& identity, int64_t& bytes,
                           const std::unordered_set<std::string>& excluded) {
    frames_.clear();
    frames_.push_back(Frame{std::move(root), identity, path_.size(), {}, 0});
    if (!list(frames_.back(), bytes)) return false;
    while (!frames_.empty()) {
        Frame& top = frames_.back();
        if (top.next == top.folders.size()) {
            frames_.pop_back();
            continue;
        }
        const std::string& name = top.folders[top.next++];
        path_.resize(top.pathLength);
        path_ += '/';
        path_ += name;
        if (!excluded.empty() && excluded.contains(path_)) continue;
        if (!top.fd && !reopen(top)) continue;
        int error = 0;
        platform::UniqueFd fd = platform::openDirectoryAt(top.fd.get(), name.c_str(), error);
        if (!fd) {
            if (!isGone(error)) ++unreadable_;
            continue;
        }
        const auto status = platform::statDescriptor(fd.get(), error);
        if (!status) {
            ++unreadable_;
            continue;
        }
        const FolderIdentity child{status->device, status->inode};
        // Another file system mounted here is not this tool's data; a folder seen before
        // (a bind mount, a repeated path) was counted where it was first seen.
        if (child.device != device_ || !seenFolders_.insert(child).second) continue;
        frames_.push_back(Frame{std::move(fd), child, path_.size(), {}, 0});
        if (frames_.size() > maximumOpenFolders) {
            frames_[frames_.size() - 1 - maximumOpenFolders].fd.reset();
        }
        if (!list(frames_.back(), bytes)) return false;
    }
    return true;
}

bool AIStorageWalker::list(Frame& frame, int64_t& bytes) {
    platform::DirectoryReader reader(frame.fd.get(), buffer_);
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (entry.type == DT_DIR) {
            frame.folders.emplace_back(entry.name, entry.length);
        } else if (entry.type == DT_REG || entry.type == DT_UNKNOWN) {
            addFile(frame.fd.get(), entry.name, frame, bytes);
        }
        if (!count()) return false;
    }
    if (reader.error() != 0) ++unreadable_;
    return true;
}

void AIStorageWalker::addFile(int directoryFd, const char* name, Frame& frame, int64_t& bytes) {
    int error = 0;
    const auto status =
        platform::statAt(directoryFd, name, false, error, platform::StatDetail::sizes);
    if (!status) {
        if (error != ENOENT) ++unreadable_;
        return;
    }
    if (status->isDirectory()) {
        // The listing did not say (DT_UNKNOWN), or a folder took the file's name.
        frame.folders.emplace_back(name);
        return;
    }
    if (!status->isRegularFile()) return;
    if (status->linkCount > 1 &&
        !seenLinkedFiles_.insert(FolderIdentity{status->device, status->inode}).second) {
        return;
    }
    bytes = saturatingAdd(bytes, allocatedBytes(*status));
}

bool AIStorageWalker::reopen(Frame& frame) {
    // Parked to stay within the descriptor budget: reached again from "/" without links,
    // and only when it is still the folder that was listed.
    int error = 0;
    platform::UniqueFd fd =
        platform::openDirectoryWithoutLinks(path_.substr(0, frame.pathLength), error);
    const auto status = fd ? platform::statDescriptor(fd.get(), error) : std::nullopt;
    if (!status || FolderIdentity{status->device, status->inode} != frame.identity) {
        ++unreadable_;
        frame.next = frame.folders.size();
        return false;
    }
    frame.fd = std::move(fd);
    return true;
}

}  // namespace veldan
