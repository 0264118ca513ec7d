#include "duplicates/DuplicateCollectWorker.hpp"

#include <dirent.h>
#include <fcntl.h>

#include <string_view>
#include <utility>

#include "duplicates/DuplicateScanner.hpp"
#include "platform/FileStatus.hpp"
#include "platform/PathAnchor.hpp"
#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uptime.hpp"

namespace veldan {

namespace {

// Entry types that are never followed or read: links, devices, pipes and sockets. The
// listing's type saves their status call; an unknown type is looked up.
bool isIgnoredType(unsigned char type) {
    return type == DT_LNK || type == DT_FIFO || type == DT_SOCK || type == DT_CHR || type == DT_BLK;
}

}  // namespace

DuplicateCollectWorker::DuplicateCollectWorker(DuplicateCollectWork& work, size_t index,
                                               const DuplicateWalkRules& rules,
                                               const ScanCancellation& cancellation,
                                               const std::function<void()>& afterListing)
    : work_(work),
      index_(index),
      rules_(rules),
      cancellation_(cancellation),
      afterListing_(afterListing),
      lastClock_(platform::uptimeSeconds()) {}

void DuplicateCollectWorker::run() {
    while (auto directory = work_.takeDirectory(cancellation_)) {
        stack_.push_back(std::move(*directory));
        while (!stack_.empty()) {
            if (cancellation_.cancelled()) {
                stack_.clear();
                break;
            }
            const DuplicateDirectory next = std::move(stack_.back());
            stack_.pop_back();
            listDirectory(next);
            work_.report(index_, result_.filesVisited, false);
            if (afterListing_) afterListing_();
            // Handed out only now, so nothing below a folder is opened before its listing
            // is complete.
            work_.offerDirectories(subfolders_);
            for (auto& folder : subfolders_)
                stack_.push_back(std::move(folder));
            subfolders_.clear();
        }
        work_.directoryDone();
    }
    stack_.shrink_to_fit();
    subfolders_.shrink_to_fit();
    work_.finishWorker(std::move(result_), index_);
}

// By name relative to the parent folder while that is kept open, else by path (in pieces
// past PATH_MAX). Never through a final link, so a folder swapped for one is not followed.
platform::UniqueFd DuplicateCollectWorker::open(const DuplicateDirectory& directory) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    if (directory.parent) {
        const std::string_view name = platform::lastPathComponent(directory.path);
        return platform::UniqueFd(::openat(directory.parent->get(), name.data(), flags));
    }
    int error = 0;
    const auto anchor = platform::PathAnchor::of(directory.path, error);
    return platform::UniqueFd(anchor ? ::openat(anchor->folder(), anchor->rest(), flags) : -1);
}

void DuplicateCollectWorker::listDirectory(const DuplicateDirectory& directory) {
    if (!work_.claimDirectory(directory.identity)) return;
    platform::UniqueFd fd = open(directory);
    int error = 0;
    const auto opened = fd ? platform::statDescriptor(fd.get(), error) : std::nullopt;
    if (!opened || DuplicateIdentity{opened->device, opened->inode} != directory.identity) {
        ++result_.unreadable;
        return;
    }
    // Kept open for the subfolders when the walk has room; they then need no path.
    const DuplicateSharedFolder shared = work_.share(fd);
    const int folderFd = shared ? shared->get() : fd.get();
    platform::DirectoryReader reader(folderFd, listing_);
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (cancellation_.cancelled()) return;
        if (!isIgnoredType(entry.type)) handleEntry(folderFd, directory.path, shared, entry);
        if (++entriesSinceClock_ >= entriesPerClockCheck) maybeReport();
    }
    if (reader.error() != 0) ++result_.unreadable;
}

void DuplicateCollectWorker::handleEntry(int directoryFd, const std::string& directory,
                                         const DuplicateSharedFolder& shared,
                                         const platform::DirectoryEntryView& entry) {
    int error = 0;
    const auto status = platform::statAt(directoryFd, entry.name, false, error);
    if (!status) {
        ++result_.unreadable;
        return;
    }
    if (!rules_.allowsDevice(status->device)) return;
    const std::string_view name(entry.name, entry.length);
    if (status->isDirectory()) {
        std::string path = platform::joinPath(directory, name);
        if (rules_.skipsDirectory(path, name, directoryFd)) return;
        subfolders_.push_back(
            {std::move(path), DuplicateIdentity{status->device, status->inode}, shared});
        return;
    }
    if (!status->isRegularFile()) return;
    ++result_.filesVisited;
    if (status->size < DuplicateScanner::minimumFileBytes) return;
    // A hard-linked inode enters the search once, through whichever path is seen first,
    // so links are never reported as copies of each other.
    if (status->linkCount >= 2 && !work_.claimHardlinkedFile({status->device, status->inode})) {
        return;
    }
    result_.add(DuplicateFile::snapshot(platform::joinPath(directory, name), *status));
}

void DuplicateCollectWorker::maybeReport() {
    entriesSinceClock_ = 0;
    const double now = platform::uptimeSeconds();
    if (now - lastClock_ < DuplicateCollectWork::progressInterval) return;
    lastClock_ = now;
    work_.report(index_, result_.filesVisited, false);
}

}  // namespace veldan
