#include "scan/SubtreeWalker.hpp"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
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

bool outOfDescriptors(int error) {
    return error == EMFILE || error == ENFILE;
}

bool isFolder(int fd, const FolderIdentity& identity) {
    int error = 0;
    auto status = platform::statDescriptor(fd, error);
    return status && FolderIdentity{status->device, status->inode} == identity;
}

}  // namespace

SubtreeWalker::SubtreeWalker(ScanContext& context, WalkReporter& reporter, FolderSharing& sharing)
    : context_(context),
      reporter_(reporter),
      sharing_(sharing),
      throttle_(reporter.wantsPartials()),
      // Opening a subfolder takes one descriptor more than the frames keep.
      openLimit_(std::clamp<size_t>(context.openFolderBudget(), 2, maximumOpenFolders) - 1) {
    frames_.reserve(16);
}

std::optional<int64_t> SubtreeWalker::allocatedBeforeSharing(const platform::FileStatus& status) {
    // On Linux the listing's values and the status record come from the same statx, so
    // the listed size always agrees and the allocated size is the block count.
    constexpr int64_t unavailableBlocks = int64_t{1} << 54;
    if (status.blocks >= unavailableBlocks) return std::nullopt;
    return std::max<int64_t>(status.blocks, 0) * 512;
}

SubtreeWalker::Listing SubtreeWalker::listRoot(int rootFd, const std::string& rootPath,
                                               CategoryFlags flags, FolderIdentity identity) {
    frames_.clear();
    path_ = rootPath;
    Frame root;
    root.identity = identity;
    root.nameOffset = rootPath.rfind('/') + 1;
    root.pathLength = path_.size();
    root.role = FolderRole::mapped;
    root.flags = flags;
    root.listed = true;
    frames_.push_back(std::move(root));
    if (!context_.cancelled()) list(frames_.back(), rootFd);
    Frame& listed = frames_.back();
    Listing listing{std::move(listed.children), listed.bytes, std::move(listed.pending)};
    frames_.clear();
    return listing;
}

ParallelChildResult SubtreeWalker::measure(int parentFd, const std::string& parentPath,
                                           CategoryFlags parentFlags, const ScanEntry& entry) {
    ParallelChildResult result;
    frames_.clear();  // a previous entry may have ended in an exception
    path_ = parentPath;
    if (enter(parentFd, entry, FolderRole::mapped, 1, parentFlags)) {
        frames_.back().baseFd = parentFd;
        run(&result);
    }
    return result;
}

void SubtreeWalker::help() {
    while (auto task = sharing_.takeAny()) {
        frames_.clear();
        const std::string path = platform::joinPath(task->folder->path, task->subfolder.name);
        try {
            if (startTask(std::move(*task))) run(nullptr);
        } catch (const std::exception&) {
            // Out of memory or a bug in one subtree: the rest of the map still counts, and
            // abandon() gave every waiting walker its result.
            context_.issues().record(path, ScanIssueReason::couldNotMeasure);
        }
    }
}

void SubtreeWalker::run(ParallelChildResult* result) {
    try {
        while (!frames_.empty())
            step(result);
    } catch (...) {
        abandon();
        throw;
    }
}

void SubtreeWalker::step(ParallelChildResult* result) {
    Frame& top = frames_.back();
    if (context_.cancelled()) top.incomplete = true;
    if (!top.listed) {
        top.listed = true;
        if (!top.incomplete) list(top, top.fd.get());
        maybeReport();
        return;
    }
    if (!top.incomplete) {
        if (sharing_.wanted()) shareFolder();
        if (top.shared) {
            if (auto subfolder = sharing_.claimOwn(*top.shared)) {
                enter(top.shared->fd.get(), *subfolder, top.role, top.depth + 1, top.flags);
                return;
            }
        } else if (top.next < top.pending.size()) {
            const ScanEntry& child = top.pending[top.next++];
            enter(top.fd.get(), child, top.role, top.depth + 1, top.flags);
            return;
        }
    }
    if (top.shared) {
        if (auto task = sharing_.helpWithin(*top.shared)) {
            startTask(std::move(*task));
            return;
        }
    }
    finishTop(result);
}

bool SubtreeWalker::enter(int parentFd, const ScanEntry& entry, FolderRole parentRole, int depth,
                          CategoryFlags parentFlags) {
    if (!context_.deviceAllowed(entry.status.device)) return false;
    const size_t parentLength = path_.size();
    if (path_.empty() || path_.back() != '/') path_ += '/';
    const size_t nameOffset = path_.size();
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
    if (!frame.fd && outOfDescriptors(error) && parkAllBut(parentFd)) {
        // The folders above give their descriptors back and are opened again by name when
        // the walk returns to them: a subtree is never dropped for want of descriptors.
        frame.fd = platform::openDirectoryAt(parentFd, entry.name.c_str(), error);
    }
    if (!frame.fd) context_.issues().record(path_, ScanIssueReason::forErrno(error));
    ++folders_;
    frames_.push_back(std::move(frame));
    parkDeepFrames();
    return true;
}

bool SubtreeWalker::startTask(FolderSharing::Task task) {
    SharedFolder& folder = *task.folder;
    std::string resume = std::move(path_);
    path_ = folder.path;
    bool entered = false;
    try {
        entered =
            enter(folder.fd.get(), task.subfolder, folder.role, folder.depth + 1, folder.flags);
    } catch (...) {
        path_ = std::move(resume);
        sharing_.deposit(folder, std::nullopt, 0, true);
        throw;
    }
    if (!entered) {
        path_ = std::move(resume);
        sharing_.deposit(folder, std::nullopt, 0, false);
        return false;
    }
    Frame& frame = frames_.back();
    frame.baseFd = folder.fd.get();
    frame.resumePath = std::move(resume);
    frame.returnTo = std::move(task.folder);
    return true;
}

FolderRole SubtreeWalker::roleFor(int parentFd, const std::string& name, FolderRole parentRole,
                                  int depth) {
    // A media library is looked at before anything is read inside it, at any depth.
    const bool skippedLibrary = isUnauthorisedLibrary(name);
    if (parentRole != FolderRole::mapped) return FolderRole::inner;
    if (skippedLibrary || depth > mappedDepth ||
        OpaqueFolderPolicy::kindAt(parentFd, name, path_, context_.settings().home)) {
        return FolderRole::boundary;
    }
    return FolderRole::mapped;
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

bool SubtreeWalker::isClaimedFolder(int fd, const FolderIdentity& identity,
                                    uint64_t listedSelf) const {
    if (listedSelf != 0 && listedSelf == identity.inode) return true;
    return isFolder(fd, identity);
}

void SubtreeWalker::list(Frame& frame, int fd) {
    if (fd < 0) return;
    platform::DirectoryReader reader(fd, buffer_);
    platform::DirectoryEntryView entry;
    if (!isClaimedFolder(fd, frame.identity, reader.peekSelfInode())) {
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
        auto status = platform::statAt(fd, entry.name, false, error, platform::StatDetail::sizes);
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
    if (frame.role == FolderRole::mapped &&
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
    // A symbolic link can have several names too; like any file, it is charged once.
    if (status.linkCount >= 2 && !context_.hardLinks().insert({status.device, status.inode})) {
        bytes = 0;  // charged where the inode was first seen
    } else if (!status.isSymbolicLink() && bytes >= ClonedFileSpace::queryFloor &&
               platform::cloneAttributesAvailable()) {
        bytes = ClonedFileSpace::diskShare(childPath(name, length), bytes);
    }
    // Only the mapped part of the tree offers files: folders measured as a whole are
    // summed without looking at what is inside them.
    if (frame.role == FolderRole::mapped && !status.isSymbolicLink() &&
        bytes >= LargestFileCollector::minimumBytes) {
        context_.largestFiles().record(childPath(name, length), bytes);
    }
    frame.bytes = saturatingAdd(frame.bytes, bytes);
    if (frame.role != FolderRole::mapped) return;
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

void SubtreeWalker::finishTop(ParallelChildResult* result) {
    Frame& top = frames_.back();
    if (top.shared) sharing_.collect(*top.shared, top.bytes, top.children, top.incomplete);
    std::optional<DiskNode> node;
    if (top.role != FolderRole::inner) {
        DiskNode folder;
        folder.path = path_;
        folder.name = path_.substr(top.nameOffset);
        folder.bytes = top.bytes;
        folder.category = categoryForFlags(top.flags);
        if (top.role == FolderRole::mapped) {
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
    if (top.returnTo) {
        // A subfolder measured for another walker: its result goes back there, and the
        // chain below carries on where it was.
        const std::shared_ptr<SharedFolder> folder = std::move(top.returnTo);
        std::string resume = std::move(top.resumePath);
        frames_.pop_back();
        path_ = std::move(resume);
        sharing_.deposit(*folder, std::move(node), bytes, incomplete);
        if (!frames_.empty() && frames_.back().parked) reopenParked(frames_.size() - 1, -1);
        return;
    }
    if (frames_.size() == 1) {
        if (result) {
            result->node = std::move(node);
            result->bytes = bytes;
        }
        frames_.pop_back();
        return;
    }
    const size_t parentIndex = frames_.size() - 2;
    if (frames_[parentIndex].parked) reopenParked(parentIndex, top.fd.get());
    frames_.pop_back();
    Frame& parent = frames_.back();
    path_.resize(parent.pathLength);
    parent.bytes = saturatingAdd(parent.bytes, bytes);
    parent.incomplete = parent.incomplete || incomplete;
    if (parent.role == FolderRole::mapped && node) parent.children.keepLargest(std::move(*node));
}

void SubtreeWalker::shareFolder() {
    // The shallowest folder of the chain under way holds the most work, as a rule. Only
    // that chain's paths are in path_.
    for (size_t i = chainStart(frames_.size() - 1); i < frames_.size(); ++i) {
        Frame& frame = frames_[i];
        if (frame.shared || !frame.listed || frame.incomplete || !frame.fd ||
            frame.next >= frame.pending.size()) {
            continue;
        }
        auto folder = std::make_shared<SharedFolder>();
        folder->path = path_.substr(0, frame.pathLength);
        folder->depth = frame.depth;
        folder->role = frame.role;
        folder->flags = frame.flags;
        folder->fd = std::move(frame.fd);
        folder->subfolders.assign(
            std::make_move_iterator(frame.pending.begin() + static_cast<ptrdiff_t>(frame.next)),
            std::make_move_iterator(frame.pending.end()));
        frame.pending.clear();
        frame.next = 0;
        frame.shared = folder;
        sharing_.offer(std::move(folder));
        return;
    }
}

void SubtreeWalker::abandon() {
    while (!frames_.empty()) {
        Frame& top = frames_.back();
        if (top.shared) {
            int64_t bytes = 0;
            KeptChildren children;
            bool incomplete = false;
            sharing_.collect(*top.shared, bytes, children, incomplete);
        }
        if (top.returnTo) sharing_.deposit(*top.returnTo, std::nullopt, 0, true);
        frames_.pop_back();
    }
}

int SubtreeWalker::folderFd(const Frame& frame) {
    return frame.shared ? frame.shared->fd.get() : frame.fd.get();
}

size_t SubtreeWalker::chainStart(size_t index) const {
    while (index > 0 && !frames_[index].returnTo)
        --index;
    return index;
}

void SubtreeWalker::reopenParked(size_t index, int childFd) {
    Frame& parked = frames_[index];
    parked.parked = false;
    // The folder may have been moved or replaced while its subtree was walked; only
    // the very folder that was listed may be continued.
    if (childFd >= 0) {
        parked.fd = platform::UniqueFd(::openat(childFd, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (parked.fd && !isFolder(parked.fd.get(), parked.identity)) parked.fd.reset();
    }
    if (!parked.fd) parked.fd = openAlongChain(index);
    if (parked.fd) return;
    context_.issues().record(path_.substr(0, parked.pathLength), ScanIssueReason::vanished);
    parked.next = parked.pending.size();
}

platform::UniqueFd SubtreeWalker::openAlongChain(size_t index) {
    // From the nearest folder above that is still open (or the chain's own parent), one
    // name at a time without following links, each checked against what was listed.
    const size_t start = chainStart(index);
    size_t from = index;
    while (from > start && folderFd(frames_[from - 1]) < 0)
        --from;
    const int base = from > start ? folderFd(frames_[from - 1]) : frames_[start].baseFd;
    platform::UniqueFd current;
    for (size_t i = from; i <= index; ++i) {
        const Frame& frame = frames_[i];
        const std::string name =
            path_.substr(frame.nameOffset, frame.pathLength - frame.nameOffset);
        const int parent = current ? current.get() : base;
        int error = 0;
        auto next = platform::openDirectoryAt(parent, name.c_str(), error);
        if (!next && outOfDescriptors(error) && parkAllBut(parent)) {
            next = platform::openDirectoryAt(parent, name.c_str(), error);
        }
        if (!next || !isFolder(next.get(), frame.identity)) return {};
        current = std::move(next);
    }
    return current;
}

void SubtreeWalker::parkDeepFrames() {
    if (frames_.size() <= openLimit_) return;
    Frame& deep = frames_[frames_.size() - 1 - openLimit_];
    if (deep.fd) {
        deep.fd.reset();
        deep.parked = true;
    }
}

bool SubtreeWalker::parkAllBut(int keptFd) {
    bool parkedAny = false;
    for (auto& frame : frames_) {
        if (frame.fd && frame.fd.get() != keptFd) {
            frame.fd.reset();
            frame.parked = true;
            parkedAny = true;
        }
    }
    return parkedAny;
}

void SubtreeWalker::maybeReport() {
    entriesSinceReport_ = 0;
    const auto due = throttle_.fileUpdates(measuredSincePartial_);
    if (due.progress) reporter_.counts(folders_, files_, path_);
    // Partials show the walker's own entry; a helper's pieces appear once handed back.
    if (due.partial && !frames_.empty() && !frames_.front().returnTo) {
        measuredSincePartial_ = false;
        reporter_.partial(partialSnapshot());
    }
}

DiskNode SubtreeWalker::partialSnapshot() const {
    size_t end = 0;
    while (end < frames_.size() && !frames_[end].returnTo)
        ++end;
    const std::string& path = end < frames_.size() ? frames_[end].resumePath : path_;
    int64_t carriedBytes = 0;
    std::optional<DiskNode> carried;
    for (size_t i = end; i-- > 0;) {
        const Frame& frame = frames_[i];
        int64_t bytes = saturatingAdd(frame.bytes, carriedBytes);
        KeptChildren children;
        if (frame.role == FolderRole::mapped) children = frame.children;
        if (frame.shared) sharing_.peek(*frame.shared, bytes, children);
        std::optional<DiskNode> node;
        if (frame.role != FolderRole::inner) {
            DiskNode folder;
            folder.path = path.substr(0, frame.pathLength);
            folder.name = path.substr(frame.nameOffset, frame.pathLength - frame.nameOffset);
            folder.bytes = bytes;
            folder.category = categoryForFlags(frame.flags);
            folder.isDirectory = true;
            folder.isPartial = true;
            if (frame.role == FolderRole::mapped) {
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
