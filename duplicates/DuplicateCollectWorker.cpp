#include "duplicates/DuplicateCollectWorker.hpp"

#include <dirent.h>
#include <fcntl.h>

#include <string_view>
#include <utility>

#include "duplicates/DuplicateScanner.hpp"
#include "platform/FileStatus.hpp"
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
            DuplicateDirectory next = std::move(stack_.back());
            stack_.pop_back();
            listDirectory(std::move(next));
            work_.report(index_, result_.filesVisited, false);
            if (afterListing_) afterListing_();
        }
        work_.directoryDone();
    }
    stack_.shrink_to_fit();
    work_.finishWorker(std::move(result_), index_);
}

void DuplicateCollectWorker::listDirectory(DuplicateDirectory directory) {
    const std::string& path = directory.path;
    int error = 0;
    if (!directory.identity) {
        const auto status =
            platform::statAt(AT_FDCWD, path.c_str(), false, error, platform::StatDetail::sizes);
        if (!status) {
            ++result_.unreadable;
            return;
        }
        if (!rules_.allowsDevice(status->device)) return;
        if (!status->isDirectory()) {
            ++result_.unreadable;
            return;
        }
        directory.identity = DuplicateIdentity{status->device, status->inode};
    }
    const DuplicateIdentity identity = *directory.identity;
    if (!work_.claimDirectory(identity)) return;
    // No link is followed even if one was swapped in since the status was taken, and the
    // folder listed must be the one that was claimed.
    platform::UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!fd) {
        ++result_.unreadable;
        return;
    }
    const auto opened = platform::statDescriptor(fd.get(), error);
    if (!opened || DuplicateIdentity{opened->device, opened->inode} != identity) {
        ++result_.unreadable;
        return;
    }
    platform::DirectoryReader reader(fd.get(), listing_);
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (cancellation_.cancelled()) return;
        if (!isIgnoredType(entry.type)) handleEntry(fd.get(), path, entry);
        if (++entriesSinceClock_ >= entriesPerClockCheck) maybeReport();
    }
    if (reader.error() != 0) ++result_.unreadable;
}

void DuplicateCollectWorker::handleEntry(int directoryFd, const std::string& directory,
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
        DuplicateDirectory folder{platform::joinPath(directory, name),
                                  DuplicateIdentity{status->device, status->inode}};
        if (rules_.skipsDirectory(folder.path, name, directoryFd)) return;
        if (!work_.offerDirectory(folder)) stack_.push_back(std::move(folder));
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
