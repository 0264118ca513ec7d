#include "devcleanup/DevTreeMeasurer.hpp"

#include <utility>

#include "platform/CloneAttributes.hpp"
#include "platform/DirectoryReader.hpp"
#include "scan/ClonedFileSpace.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/SubtreeWalker.hpp"

namespace veldan {

namespace {

// Sets grown by one huge tree are given back instead of being carried to the next one.
constexpr size_t keptBuckets = 1 << 14;

uint64_t mixed(uint64_t state, uint64_t value) {
    // splitmix64's finaliser: every input bit reaches every output bit.
    uint64_t z = state ^ (value + 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

uint64_t nameHash(const char* name, size_t length) {
    uint64_t hash = 0xCBF29CE484222325ULL;  // FNV-1a
    for (size_t i = 0; i < length; ++i) {
        hash ^= static_cast<unsigned char>(name[i]);
        hash *= 0x100000001B3ULL;
    }
    return hash;
}

uint64_t entryValue(uint64_t parentInode, const char* name, size_t length,
                    const platform::FileStatus& status) {
    uint64_t value = mixed(parentInode, nameHash(name, length));
    for (uint64_t part : {status.device, status.inode, uint64_t{status.mode}, status.linkCount,
                          static_cast<uint64_t>(status.size), static_cast<uint64_t>(status.blocks),
                          static_cast<uint64_t>(status.modified.seconds),
                          static_cast<uint64_t>(status.modified.nanoseconds),
                          static_cast<uint64_t>(status.changed.seconds),
                          static_cast<uint64_t>(status.changed.nanoseconds)}) {
        value = mixed(value, part);
    }
    return value;
}

template <typename Set>
void reset(Set& set) {
    if (set.bucket_count() > keptBuckets) {
        set = Set();
    } else {
        set.clear();
    }
}

}  // namespace

DevTreeMeasurer::DevTreeMeasurer(const ScanCancellation& cancellation, std::function<void()> tick)
    : cancellation_(cancellation), tick_(std::move(tick)) {}

DevTreeMeasurement DevTreeMeasurer::measure(platform::UniqueFd folder, const std::string& path,
                                            const platform::FileStatus& status) {
    result_ = {};
    device_ = status.device;
    reset(visited_);
    reset(hardLinked_);
    chain_.clear();
    path_ = path;
    const FolderIdentity identity{status.device, status.inode};
    visited_.insert(identity);
    chain_.push(std::make_shared<const platform::UniqueFd>(std::move(folder)), identity,
                Folder{{}, 0, path_.size()});
    list(chain_.top());
    while (!chain_.empty()) {
        if (cancellation_.cancelled()) {
            result_.cancelled = true;
            break;
        }
        auto& top = chain_.top();
        if (top.data.next < top.data.subfolders.size()) {
            const Pending subfolder = std::move(top.data.subfolders[top.data.next++]);
            enter(top, subfolder);
            continue;
        }
        top.data.subfolders = {};
        if (!chain_.pop()) {
            // The folder went away while its subtree was walked: what it still held is
            // not known.
            auto& lost = chain_.top().data;
            result_.unreadableItems += 1 + static_cast<int64_t>(lost.subfolders.size() - lost.next);
            lost.next = lost.subfolders.size();
        }
        if (!chain_.empty()) path_.resize(chain_.top().data.pathLength);
    }
    chain_.clear();
    return result_;
}

void DevTreeMeasurer::enter(DevFolderChain<Folder>::Link& parent, const Pending& subfolder) {
    const size_t parentLength = path_.size();
    if (path_.empty() || path_.back() != '/') path_ += '/';
    path_ += subfolder.name;
    int error = 0;
    platform::UniqueFd fd =
        platform::openDirectoryAt(parent.fd->get(), subfolder.name.c_str(), error);
    if (!fd) {
        ++result_.unreadableItems;
        path_.resize(parentLength);
        return;
    }
    chain_.push(std::make_shared<const platform::UniqueFd>(std::move(fd)), subfolder.identity,
                Folder{{}, 0, path_.size()});
    list(chain_.top());
}

void DevTreeMeasurer::list(DevFolderChain<Folder>::Link& folder) {
    const int fd = folder.fd->get();
    platform::DirectoryReader reader(fd, listing_);
    if (reader.peekSelfInode() != folder.identity.inode) {
        // Replaced since its parent was listed: whatever is open now was not measured
        // there, and walking it could count another folder.
        int error = 0;
        const auto opened = platform::statDescriptor(fd, error);
        if (!opened || FolderIdentity{opened->device, opened->inode} != folder.identity) {
            ++result_.unreadableItems;
            return;
        }
    }
    platform::DirectoryEntryView entry;
    while (reader.next(entry)) {
        if (++sinceTick_ >= entriesPerTick) {
            sinceTick_ = 0;
            if (cancellation_.cancelled()) return;
            if (tick_) tick_();
        }
        int error = 0;
        const auto status = platform::statAt(fd, entry.name, false, error);
        if (!status) {
            ++result_.unreadableItems;
            continue;
        }
        measureEntry(folder, entry.name, entry.length, *status);
    }
    if (reader.error() != 0) ++result_.unreadableItems;
}

void DevTreeMeasurer::measureEntry(DevFolderChain<Folder>::Link& folder, const char* name,
                                   size_t length, const platform::FileStatus& status) {
    result_.fingerprint.fold(entryValue(folder.identity.inode, name, length, status));
    if (status.device != device_) return;
    const auto allocated = SubtreeWalker::allocatedBeforeSharing(status);
    if (!allocated) ++result_.unreadableItems;
    int64_t bytes = allocated.value_or(0);
    const FolderIdentity identity{status.device, status.inode};
    if (status.isDirectory()) {
        if (visited_.insert(identity).second) {
            folder.data.subfolders.push_back(Pending{std::string(name, length), identity});
        } else {
            bytes = 0;  // a folder reached twice (a bind mount) is one folder
        }
    } else if (status.linkCount >= 2 && !hardLinked_.insert(identity).second) {
        bytes = 0;  // charged where this walk first met the inode
    } else if (platform::cloneAttributesAvailable() && status.isRegularFile() &&
               bytes >= ClonedFileSpace::queryFloor) {
        std::string file = path_;
        file += '/';
        file.append(name, length);
        bytes = ClonedFileSpace::diskShare(file, bytes);
    }
    result_.bytes = saturatingAdd(result_.bytes, bytes);
}

}  // namespace veldan
