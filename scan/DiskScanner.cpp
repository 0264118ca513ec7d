#include "scan/DiskScanner.hpp"

#include <cstring>
#include <exception>
#include <system_error>
#include <thread>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"
#include "scan/ClonedFileSpace.hpp"
#include "scan/EntryOrder.hpp"
#include "scan/FolderSharing.hpp"
#include "scan/ParallelRootState.hpp"
#include "scan/ScanContext.hpp"
#include "scan/ScanIssueReason.hpp"
#include "scan/SubtreeWalker.hpp"

namespace veldan {

struct DiskScanner::Walk {
    DiskNode root;
    int64_t folders = 0;
    int64_t files = 0;
    ScanIssueCollector::Totals issues;
    std::vector<LargeFile> largestFiles;
    std::map<std::string, int64_t> discovered;
};

namespace {

static_assert(DiskScanner::maximumWorkers == ParallelRootState::maximumWorkers);

// A finished child of a stopped scan, taken as it is. Only what its kept nodes show is
// known again: tracked and recommended folders among them are rediscovered, and the
// folders and files they show stand in for the visit counts.
ParallelChildResult reuse(const DiskNode& node, ScanContext& context, ParallelRootState& state) {
    ParallelChildResult result;
    result.node = node;
    result.bytes = node.bytes;
    int64_t folders = 0;
    int64_t files = 0;
    std::vector<const DiskNode*> stack{&node};
    while (!stack.empty()) {
        const DiskNode* current = stack.back();
        stack.pop_back();
        if (current->isSummary) continue;
        if (!current->isDirectory) {
            ++files;
            continue;
        }
        ++folders;
        context.discover(current->path, current->name, current->bytes);
        for (const auto& child : current->children)
            stack.push_back(&child);
    }
    state.addCounts(folders, files);
    return result;
}

CategoryFlags pathFlags(const std::string& path) {
    CategoryFlags flags = 0;
    for (auto component : platform::pathComponents(path))
        flags |= categoryFlags(component);
    return flags;
}

}  // namespace

DiskScanner::DiskScanner(ScanSettings settings, ScanReuse* reuse)
    : settings_(std::move(settings)), reuse_(reuse) {}

std::optional<std::string> DiskScanner::rootProblem(const std::string& path) {
    int error = 0;
    auto status = platform::statPath(path, true, error);
    if (!status) {
        if (error == ENOENT || error == ENOTDIR) {
            return "Nothing exists at " + path + "; choose a folder that exists.";
        }
        if (error == EACCES || error == EPERM) {
            return "Veldan cannot reach " + path +
                   " (access denied); choose a folder you can read.";
        }
        return "Veldan cannot read " + path + " (" + std::strerror(error) +
               "); choose another folder.";
    }
    if (!status->isDirectory()) return path + " is not a folder; choose a folder to scan.";
    auto fd = platform::openDirectory(path, error);
    if (!fd) {
        if (error == EACCES || error == EPERM) {
            return "Veldan cannot read " + path + " (access denied); choose a folder you can read.";
        }
        return "Veldan cannot open " + path + " (" + std::strerror(error) +
               "); choose another folder.";
    }
    return std::nullopt;
}

std::set<uint64_t> DiskScanner::allowedDevices(const std::string& path) const {
    std::set<uint64_t> devices;
    if (auto status = platform::statPath(platform::resolveSymlinks(path), false)) {
        devices.insert(status->device);
    }
    if (platform::standardizePath(path) == "/") {
        if (auto home = platform::statPath(platform::resolveSymlinks(settings_.home), false)) {
            devices.insert(home->device);
        }
    }
    return devices;
}

std::vector<ScanEntry> DiskScanner::prioritizedEntries(const std::string& folder,
                                                       std::vector<ScanEntry> entries) const {
    return EntryOrder::prioritized(folder, std::move(entries), settings_.home);
}

std::optional<int64_t> DiskScanner::allocatedBytes(const std::string& path,
                                                   const platform::FileStatus& status) {
    auto bytes = SubtreeWalker::allocatedBeforeSharing(status);
    if (!bytes) return std::nullopt;
    return ClonedFileSpace::diskShare(path, *bytes);
}

std::optional<DiskScanner::Walk> DiskScanner::walk(const std::string& root,
                                                   const ScanCancellation& cancellation,
                                                   const ScanProgress& progress,
                                                   const ScanPartial& partial,
                                                   const std::map<std::string, DiskNode>& reusable,
                                                   const ScanStopped& stopped) const {
    ScanContext context(root, settings_, allowedDevices(root), cancellation);
    FolderSharing sharing;
    ParallelRootState state(root, progress, partial, cancellation);
    const CategoryFlags rootFlags = pathFlags(root);

    // The caller's thread lists the folder itself, measuring its files on the way with
    // progress shown, then works as the first of the workers.
    ParallelRootState::Reporter firstReporter(state, 0);
    SubtreeWalker firstWalker(context, firstReporter, sharing);
    int error = 0;
    platform::UniqueFd rootFd = platform::openDirectory(root, error);
    std::optional<platform::FileStatus> rootStatus;
    if (rootFd) rootStatus = platform::statDescriptor(rootFd.get(), error);
    std::vector<ScanEntry> subfolders;
    if (!rootStatus) {
        context.issues().record(root, ScanIssueReason::forErrno(error));
    } else {
        const FolderIdentity identity{rootStatus->device, rootStatus->inode};
        context.claimFolder(identity);
        firstReporter.listing();
        auto listing = firstWalker.listRoot(rootFd.get(), root, rootFlags, identity);
        subfolders = std::move(listing.subfolders);
        state.finishListing(std::move(listing.files), listing.bytes, subfolders.size());
    }

    auto work = [&](size_t worker, ParallelRootState::Reporter& reporter, SubtreeWalker& walker) {
        sharing.join();
        while (auto index = state.takeNext()) {
            if (cancellation.cancelled()) break;
            const ScanEntry& entry = subfolders[*index];
            const std::string path = platform::joinPath(root, entry.name);
            ParallelChildResult result;
            if (auto kept = reusable.find(path); kept != reusable.end()) {
                result = reuse(kept->second, context, state);
            } else {
                reporter.setIndex(*index);
                try {
                    result = walker.measure(rootFd.get(), root, rootFlags, entry);
                } catch (const std::exception&) {
                    // Out of memory or a bug in one subtree: the rest of the map still counts.
                    context.issues().record(path, ScanIssueReason::couldNotMeasure);
                    result = {};
                }
            }
            try {
                state.finish(*index, std::move(result));
            } catch (const std::exception&) {
                context.issues().record(path, ScanIssueReason::couldNotMeasure);
            }
        }
        // Out of entries of its own: helps inside those still being walked.
        walker.help();
        state.settleCounts(worker, walker.folders(), walker.files());
    };
    // Every worker is started whenever there is a subfolder: those without an entry of
    // their own help inside the large ones.
    const size_t workerCount = subfolders.empty() ? 0 : context.workerBudget();
    std::vector<std::thread> workers;
    for (size_t i = 1; i < workerCount; ++i) {
        try {
            workers.emplace_back([&, i] {
                ParallelRootState::Reporter reporter(state, i);
                SubtreeWalker walker(context, reporter, sharing);
                work(i, reporter, walker);
            });
        } catch (const std::system_error&) {
            break;  // fewer threads are slower, not wrong: the hand-out is dynamic
        }
    }
    if (workerCount > 0) {
        work(0, firstReporter, firstWalker);
    } else {
        state.settleCounts(0, firstWalker.folders(), firstWalker.files());
    }
    for (auto& worker : workers)
        worker.join();
    state.close();
    if (cancellation.cancelled()) {
        if (stopped) stopped(context.largestFiles().files());
        return std::nullopt;
    }

    Walk result;
    result.root = state.takeRoot();
    result.folders = state.totalFolders() + (rootStatus ? 1 : 0);
    result.files = state.totalFiles();
    result.issues = context.issues().totals();
    result.largestFiles = context.largestFiles().files();
    result.discovered = context.discovered();
    return result;
}

std::optional<ScanOutcome> DiskScanner::walkOutcome(
    const std::string& root, const ScanCancellation& cancellation, const ScanProgress& progress,
    const ScanPartial& partial, const std::map<std::string, DiskNode>& reusable,
    const std::vector<LargeFile>& carriedLargestFiles, const ScanStopped& stopped) const {
    const auto volume = VolumeSpace::read(root);
    auto walked = walk(root, cancellation, progress, partial, reusable, stopped);
    if (!walked) return std::nullopt;

    ScanSnapshot snapshot;
    snapshot.root = std::move(walked->root);
    snapshot.volume = volume.value_or(VolumeSpace{});
    snapshot.discoveredDirectories = std::move(walked->discovered);
    snapshot.discoveredDirectories[root] = snapshot.root.bytes;
    LargestFileCollector largest;
    for (const auto& file : walked->largestFiles)
        largest.record(file.path, file.bytes);
    for (const auto& file : carriedLargestFiles)
        largest.record(file.path, file.bytes);
    snapshot.largestFiles = largest.files();
    snapshot.visitedFolderCount = walked->folders;
    snapshot.visitedFileCount = walked->files;
    snapshot.unreadableItems = walked->issues.count;
    snapshot.unreadablePaths = walked->issues.paths;
    if (!walked->issues.reasons.empty()) snapshot.unreadableReasons = walked->issues.reasons;
    snapshot.skippedPhotosLibraries = walked->issues.skippedPhotosLibraries;
    snapshot.skippedMusicLibraries = walked->issues.skippedMusicLibraries;
    snapshot.finishedAt = std::chrono::system_clock::now();
    return ScanOutcome{std::move(snapshot), volume};
}

std::optional<ScanOutcome> DiskScanner::scan(const std::string& path,
                                             const ScanCancellation& cancellation,
                                             const ScanProgress& progress,
                                             const ScanPartial& partial,
                                             const ScanStopped& stopped) const {
    const std::string root = platform::absolutePath(path);
    std::unique_ptr<ScanReuse::Lease> lease;
    if (reuse_) {
        auto prepared = reuse_->prepare(root);
        if (prepared.reusable) {
            const ScanSnapshot& snapshot = *prepared.reusable;
            std::optional<VolumeSpace> volume;
            if (snapshot.volume.total > 0) volume = snapshot.volume;
            return ScanOutcome{snapshot, volume};
        }
        lease = std::move(prepared.lease);
    }
    auto outcome = walkOutcome(root, cancellation, progress, partial, {}, {}, stopped);
    if (outcome && lease) lease->store(outcome->snapshot);
    return outcome;
}

std::optional<SubtreeScan> DiskScanner::scanSubtree(const std::string& path,
                                                    const ScanCancellation& cancellation,
                                                    const ScanProgress& progress) const {
    auto walked = walk(platform::absolutePath(path), cancellation, progress, {}, {});
    if (!walked) return std::nullopt;
    return SubtreeScan{std::move(walked->root), walked->folders, walked->files};
}

std::optional<ScanOutcome> DiskScanner::scanRemainder(
    const DiskNode& partialRoot, const std::string& path, const ScanCancellation& cancellation,
    const ScanProgress& progress, const std::vector<LargeFile>& earlierLargestFiles) const {
    const std::string root = platform::absolutePath(path);
    std::map<std::string, DiskNode> reusable;
    if (partialRoot.path == root) {
        for (const auto& child : partialRoot.children) {
            if (!child.isPartial && !child.isSummary) reusable.emplace(child.path, child);
        }
    }
    std::vector<LargeFile> carried;
    for (const auto& file : earlierLargestFiles) {
        for (const auto& [childPath, child] : reusable) {
            if (platform::isSameOrUnder(file.path, childPath)) {
                carried.push_back(file);
                break;
            }
        }
    }
    return walkOutcome(root, cancellation, progress, {}, reusable, carried);
}

}  // namespace veldan
