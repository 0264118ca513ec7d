#include "scan/SubtreeWalker.hpp"

#include <fcntl.h>

#include <algorithm>
#include <utility>

#include "platform/CloneAttributes.hpp"
#include "platform/DirectoryReader.hpp"
#include "platform/Paths.hpp"
#include "scan/ClonedFileSpace.hpp"
#include "scan/EntryOrder.hpp"
#include "scan/OpaqueFolderPolicy.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/ScanIssueReason.hpp"

namespace veldan {

namespace {

bool isPhotoLibrary(const std::string& extension) {
    return extension == "photoslibrary" || extension == "photolibrary" || extension == "aplibrary";
}

bool isMusicLibrary(const std::string& extension) {
    return extension == "musiclibrary" || extension == "ituneslibrary" || extension == "tvlibrary";
}

}  // namespace

SubtreeWalker::SubtreeWalker(ScanContext& context, WalkReporter& reporter)
    : context_(context), reporter_(reporter), throttle_(reporter.wantsPartials()) {
    frames_.reserve(16);
}

std::optional<int64_t> SubtreeWalker::allocatedBeforeSharing(const platform::FileStatus& status) {
    // On Linux the listing's values and the status record come from the same statx, so
    // the listed size always agrees and the allocated size is the block count.
    constexpr int64_t unavailableBlocks = int64_t{1} << 54;
    if (status.blocks >= unavailableBlocks) return std::nullopt;
    return std::max<int64_t>(status.blocks, 0) * 512;
}

ParallelChildResult SubtreeWalker::measure(int parentFd, const std::string& parentPath,
                                           CategoryFlags parentFlags, const ScanEntry& entry) {
    ParallelChildResult result;
    frames_.clear();  // a previous entry may have ended in an exception
    path_ = parentPath;
    basePathLength_ = path_.size();
    folders_ = 0;
    files_ = 0;
    if (!entry.status.isDirectory()) {
        // A top-level file is charged like any file, through a frame that keeps it.
        Frame holder;
        holder.role = Role::mapped;
        holder.flags = parentFlags;
        measureFile(holder, entry.name.c_str(), entry.name.size(), entry.status);
        auto children = std::move(holder.children).finish(path_, DiskCategory::files);
        if (!children.empty() && !children.front().isSummary)
            result.node = std::move(children.front());
        result.bytes = holder.bytes;
        result.files = files_;
        return result;
    }
    if (enter(parentFd, entry, Role::mapped, 1, parentFlags)) {
        while (!frames_.empty()) {
            Frame& top = frames_.back();
            if (context_.cancelled()) top.incomplete = true;
            if (!top.listed) {
                top.listed = true;
                if (!top.incomplete) list(top);
                maybeReport();
                continue;
            }
            if (!top.incomplete && top.next < top.pending.size()) {
                const ScanEntry& child = top.pending[top.next++];
                enter(top.fd.get(), child, top.role, top.depth + 1, top.flags);
                continue;
            }
            finishTop(result);
        }
    }
    result.folders = folders_;
    result.files = files_;
    return result;
}

bool SubtreeWalker::enter(int parentFd, const ScanEntry& entry, Role parentRole, int depth,
                          CategoryFlags parentFlags) {
    if (!context_.deviceAllowed(entry.status.device)) return false;
    const size_t nameOffset = path_.size() + (path_.empty() || path_.back() != '/' ? 1 : 0);
    const size_t parentLength = path_.size();
    if (nameOffset > path_.size()) path_ += '/';
    path_ += entry.name;
    if ((depth <= 2 && context_.isStartupAlias(path_)) ||
        !context_.claimFolder({entry.status.device, entry.status.inode})) {
        path_.resize(parentLength);
        return false;
    }
    Frame frame;
    frame.identity = {entry.status.device, entry.status.inode};
    frame.nameOffset = nameOffset;
    frame.pathLength = path_.size();
    frame.depth = depth;
    frame.role = roleFor(parentFd, entry.name, parentRole, depth);
    frame.flags = parentFlags | categoryFlags(entry.name);
    int error = 0;
    frame.fd = platform::openDirectoryAt(parentFd, entry.name.c_str(), error);
    if (!frame.fd) context_.issues().record(path_, ScanIssueReason::forErrno(error));
    ++folders_;
    frames_.push_back(std::move(frame));
    parkDeepFrames();
    return true;
}

SubtreeWalker::Role SubtreeWalker::roleFor(int parentFd, const std::string& name, Role parentRole,
                                           int depth) {
    // A media library is looked at before anything is read inside it, at any depth.
    const bool skippedLibrary = isUnauthorisedLibrary(name);
    if (parentRole != Role::mapped) return Role::inner;
    if (skippedLibrary || depth > mappedDepth ||
        OpaqueFolderPolicy::kindAt(parentFd, name, path_, context_.settings().home)) {
        return Role::boundary;
    }
    return Role::mapped;
}

bool SubtreeWalker::isUnauthorisedLibrary(const std::string& name) {
    if (name.find('.') == std::string::npos) return false;
    const std::string extension = platform::pathExtension(name);
    if (isPhotoLibrary(extension) &&
        context_.settings().photos != platform::MediaAuthorization::authorized) {
        context_.issues().recordSkippedPhotosLibrary(path_);
        return true;
    }
    if (isMusicLibrary(extension) &&
        context_.settings().music != platform::MediaAuthorization::authorized) {
        context_.issues().recordSkippedMusicLibrary(path_);
        return true;
    }
    return false;
}

bool SubtreeWalker::isClaimedFolder(const Frame& frame, uint64_t listedSelf) const {
    if (listedSelf != 0 && listedSelf == frame.identity.inode) return true;
    int error = 0;
    auto opened = platform::statDescriptor(frame.fd.get(), error);
    return opened && FolderIdentity{opened->device, opened->inode} == frame.identity;
}

void SubtreeWalker::list(Frame& frame) {
    if (!frame.fd) return;
    platform::DirectoryReader reader(frame.fd.get(), buffer_);
    platform::DirectoryEntryView entry;
    if (!isClaimedFolder(frame, reader.peekSelfInode())) {
        // Renamed or replaced since it was listed: the folder opened is not the one claimed
        // in the visited set, and walking it could count another folder twice.
        context_.issues().record(path_, ScanIssueReason::vanished);
        return;
    }
    while (reader.next(entry)) {
        if (context_.cancelled()) {
            frame.incomplete = true;
            return;
        }
        int error = 0;
        auto status =
            platform::statAt(frame.fd.get(), entry.name, false, error, platform::StatDetail::sizes);
        if (!status) {
            context_.issues().record(childPath(entry.name, entry.length),
                                     ScanIssueReason::forErrno(error));
        } else if (status->isDirectory()) {
            if (context_.deviceAllowed(status->device)) {
                frame.pending.push_back(ScanEntry{std::string(entry.name, entry.length), *status});
            }
        } else {
            measureFile(frame, entry.name, entry.length, *status);
        }
        if (++entriesSinceReport_ >= 64) maybeReport();
    }
    if (reader.error() != 0) {
        context_.issues().record(path_, ScanIssueReason::forErrno(reader.error()));
    }
    if (frame.role == Role::mapped &&
        EntryOrder::hasPriorityTable(path_, context_.settings().home)) {
        frame.pending =
            EntryOrder::prioritized(path_, std::move(frame.pending), context_.settings().home);
    }
}

void SubtreeWalker::measureFile(Frame& frame, const char* name, size_t length,
                                const platform::FileStatus& status) {
    ++files_;
    measuredSincePartial_ = true;
    int64_t bytes = 0;
    if (auto allocated = allocatedBeforeSharing(status)) {
        bytes = *allocated;
    } else {
        context_.issues().record(childPath(name, length), ScanIssueReason::sizeUnavailable);
    }
    if (!status.isSymbolicLink()) {
        if (status.linkCount >= 2 && !context_.hardLinks().insert({status.device, status.inode})) {
            bytes = 0;  // charged where the inode was first seen
        } else if (bytes >= ClonedFileSpace::queryFloor && platform::cloneAttributesAvailable()) {
            bytes = ClonedFileSpace::diskShare(childPath(name, length), bytes);
        }
        // Only the mapped part of the tree offers files: folders measured as a whole are
        // summed without looking at what is inside them.
        if (frame.role == Role::mapped && bytes >= LargestFileCollector::minimumBytes) {
            context_.largestFiles().record(childPath(name, length), bytes);
        }
    }
    frame.bytes = saturatingAdd(frame.bytes, bytes);
    if (frame.role != Role::mapped) return;
    const std::string_view fileName(name, length);
    if (!frame.children.wouldKeep(bytes, fileName)) {
        frame.children.hide(bytes);
        return;
    }
    DiskNode node;
    node.path = childPath(name, length);
    node.name = std::string(fileName);
    node.bytes = bytes;
    node.category = categoryForFlags(frame.flags | categoryFlags(fileName));
    frame.children.keepLargest(std::move(node));
}

void SubtreeWalker::finishTop(ParallelChildResult& result) {
    Frame& top = frames_.back();
    std::optional<DiskNode> node;
    if (top.role != Role::inner) {
        DiskNode folder;
        folder.path = path_;
        folder.name = path_.substr(top.nameOffset);
        folder.bytes = top.bytes;
        folder.category = categoryForFlags(top.flags);
        if (top.role == Role::mapped) {
            folder.children = std::move(top.children).finish(path_, folder.category);
        }
        folder.isDirectory = true;
        folder.isPartial = top.incomplete;
        node = std::move(folder);
    }
    // Tracked folders count at any depth: a project's node_modules deep below the map
    // is still worth finding.
    context_.discover(path_, std::string_view(path_).substr(top.nameOffset), top.bytes);
    const int64_t bytes = top.bytes;
    const bool incomplete = top.incomplete;
    if (frames_.size() == 1) {
        result.node = std::move(node);
        result.bytes = bytes;
        frames_.pop_back();
        path_.resize(basePathLength_);
        return;
    }
    Frame& parent = frames_[frames_.size() - 2];
    if (parent.parked) reopenParked(parent, top.fd.get());
    frames_.pop_back();
    path_.resize(parent.pathLength);
    parent.bytes = saturatingAdd(parent.bytes, bytes);
    parent.incomplete = parent.incomplete || incomplete;
    if (parent.role == Role::mapped && node) parent.children.keepLargest(std::move(*node));
}

void SubtreeWalker::parkDeepFrames() {
    if (frames_.size() <= maximumOpenFolders) return;
    Frame& deep = frames_[frames_.size() - 1 - maximumOpenFolders];
    if (deep.fd && !deep.parked) {
        deep.fd.reset();
        deep.parked = true;
    }
}

void SubtreeWalker::reopenParked(Frame& parked, int childFd) {
    parked.parked = false;
    // The folder may have been moved or replaced while its subtree was walked; only
    // the very folder that was listed may be continued.
    int error = 0;
    if (childFd >= 0) {
        parked.fd = platform::UniqueFd(::openat(childFd, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    if (!parked.fd && parked.pathLength < 4096) {
        parked.fd = platform::openDirectory(path_.substr(0, parked.pathLength), error);
    }
    if (parked.fd) {
        auto status = platform::statDescriptor(parked.fd.get(), error);
        if (status && FolderIdentity{status->device, status->inode} == parked.identity) return;
        parked.fd.reset();
    }
    context_.issues().record(path_.substr(0, parked.pathLength), ScanIssueReason::vanished);
    parked.next = parked.pending.size();
}

void SubtreeWalker::maybeReport() {
    entriesSinceReport_ = 0;
    const auto due = throttle_.fileUpdates(measuredSincePartial_);
    if (due.progress) reporter_.counts(folders_, files_, path_);
    if (due.partial) {
        measuredSincePartial_ = false;
        reporter_.partial(partialSnapshot());
    }
}

DiskNode SubtreeWalker::partialSnapshot() const {
    int64_t carriedBytes = 0;
    std::optional<DiskNode> carried;
    for (size_t i = frames_.size(); i-- > 0;) {
        const Frame& frame = frames_[i];
        const int64_t bytes = saturatingAdd(frame.bytes, carriedBytes);
        std::optional<DiskNode> node;
        if (frame.role != Role::inner) {
            DiskNode folder;
            folder.path = path_.substr(0, frame.pathLength);
            folder.name = path_.substr(frame.nameOffset, frame.pathLength - frame.nameOffset);
            folder.bytes = bytes;
            folder.category = categoryForFlags(frame.flags);
            folder.isDirectory = true;
            folder.isPartial = true;
            if (frame.role == Role::mapped) {
                KeptChildren children = frame.children;
                if (carried) children.keepLargest(std::move(*carried));
                folder.children = std::move(children).finish(folder.path, folder.category);
            }
            node = std::move(folder);
        }
        carriedBytes = bytes;
        carried = std::move(node);
    }
    return carried ? std::move(*carried) : DiskNode{};
}

std::string SubtreeWalker::childPath(const char* name, size_t length) const {
    std::string path;
    path.reserve(path_.size() + 1 + length);
    path = path_;
    if (path.empty() || path.back() != '/') path += '/';
    path.append(name, length);
    return path;
}

}  // namespace veldan
