#include "duplicates/DuplicateScanner.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <compare>
#include <limits>
#include <map>
#include <thread>
#include <unordered_map>
#include <utility>

#include "duplicates/DuplicateCollectResult.hpp"
#include "duplicates/DuplicateCollectWork.hpp"
#include "duplicates/DuplicateCollectWorker.hpp"
#include "duplicates/DuplicateHashWork.hpp"
#include "duplicates/DuplicatePrefixBoard.hpp"
#include "duplicates/DuplicateWalkRules.hpp"
#include "platform/Collation.hpp"
#include "platform/PathAnchor.hpp"
#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uuid.hpp"

namespace veldan {

namespace {

using platform::Sha256Digest;
using Digests = std::vector<std::optional<Sha256Digest>>;

// Groups are keyed by size as well as digest, so files of different sizes can never
// share a group even if a sample digest collides.
struct DuplicateDigestKey {
    int64_t size = 0;
    Sha256Digest digest{};
    friend auto operator<=>(const DuplicateDigestKey&, const DuplicateDigestKey&) = default;
};

using DigestGroups = std::map<DuplicateDigestKey, std::vector<size_t>>;

int64_t saturatingAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<int64_t>::max() : sum;
}

// Runs `body(index)` on `count` threads and waits for all of them.
template <typename Body>
void runWorkers(size_t count, const Body& body) {
    std::vector<std::jthread> threads;
    threads.reserve(count);
    for (size_t i = 0; i < count; ++i)
        threads.emplace_back([&body, i] { body(i); });
}

std::optional<DuplicateCollectResult> collect(const std::string& root,
                                              const DuplicateIdentity& rootIdentity,
                                              const DuplicateWalkRules& rules,
                                              const ScanCancellation& cancellation,
                                              const DuplicateScanProgress& progress,
                                              const DuplicateScanSeams& seams) {
    DuplicateCollectWork work(root, rootIdentity, DuplicateScanner::collectingWorkers,
                              seams.sharedFolderLimit, progress);
    runWorkers(DuplicateScanner::collectingWorkers, [&](size_t index) {
        DuplicateCollectWorker(work, index, rules, cancellation, seams.afterListing).run();
    });
    if (cancellation.cancelled()) return std::nullopt;
    DuplicateCollectResult merged;
    for (auto& result : work.takeResults())
        merged.merge(std::move(result));
    return merged;
}

// Every file of a size shared by at least two distinct inodes. Several paths to one
// inode (which the hard-link set already mostly prevents) are collapsed to the path that
// sorts first, so an inode is never compared with itself.
std::vector<DuplicateCandidate> selectCandidates(DuplicateCollectResult& collected) {
    std::vector<DuplicateCandidate> candidates;
    std::unordered_map<DuplicateIdentity, size_t, DuplicateIdentityHash> byIdentity;
    std::vector<DuplicateCandidate> distinct;
    for (auto& [size, bucket] : collected.bySize) {
        if (bucket.others.empty()) continue;
        byIdentity.clear();
        distinct.clear();
        const auto consider = [&](DuplicateCandidate&& candidate) {
            const DuplicateIdentity identity{candidate.file.device, candidate.file.inode};
            const auto [found, inserted] = byIdentity.emplace(identity, distinct.size());
            if (inserted) {
                distinct.push_back(std::move(candidate));
            } else if (candidate.file.path < distinct[found->second].file.path) {
                distinct[found->second] = std::move(candidate);
            }
        };
        consider(std::move(bucket.first));
        for (auto& other : bucket.others)
            consider(std::move(other));
        if (distinct.size() < 2) continue;
        for (auto& candidate : distinct)
            candidates.push_back(std::move(candidate));
    }
    collected.bySize = {};
    return candidates;
}

// Entire reads (with a board) end early for candidates shown to differ from the rest of
// their group.
std::optional<Digests> hashCandidates(const std::vector<DuplicateCandidate>& candidates,
                                      bool sampled, DuplicateScanPhase phase, size_t maximumWorkers,
                                      DuplicatePrefixBoard* board,
                                      const ScanCancellation& cancellation,
                                      const DuplicateScanProgress& progress,
                                      const DuplicateScanSeams& seams) {
    if (cancellation.cancelled()) return std::nullopt;
    if (candidates.empty()) return Digests{};
    DuplicateHashWork work(candidates.size(), phase, progress);
    runWorkers(std::min(candidates.size(), maximumWorkers), [&](size_t) {
        while (!cancellation.cancelled()) {
            const auto index = work.take();
            if (!index) return;
            DuplicateScanner::PrefixCheck stillNeeded;
            if (board) {
                stillNeeded = [board, i = *index](const Sha256Digest& prefix) {
                    return board->post(i, prefix);
                };
            }
            auto digest = DuplicateScanner::hash(candidates[*index].file, sampled, cancellation,
                                                 seams, stillNeeded);
            if (cancellation.cancelled()) return;
            if (board && !digest) board->drop(*index);
            work.finish(digest, *index);
        }
    });
    if (cancellation.cancelled()) return std::nullopt;
    return work.takeDigests();
}

// Candidates by (size, digest), keeping only keys shared by two or more. A candidate
// without a digest counts one unreadable file, unless the board stopped it.
DigestGroups groupByDigest(const std::vector<DuplicateCandidate>& candidates,
                           const Digests& digests, const DuplicatePrefixBoard* board,
                           int64_t& unreadable) {
    DigestGroups groups;
    for (size_t i = 0; i < candidates.size(); ++i) {
        if (!digests[i]) {
            if (!board || !board->stopped(i)) ++unreadable;
            continue;
        }
        groups[DuplicateDigestKey{candidates[i].file.bytes, *digests[i]}].push_back(i);
    }
    std::erase_if(groups, [](const auto& entry) { return entry.second.size() < 2; });
    return groups;
}

bool finderOrder(const DuplicateFile& a, const DuplicateFile& b) {
    const int order = platform::localizedStandardCompare(a.path, b.path);
    if (order != 0) return order < 0;
    return a.path < b.path;  // names that collate equal ("A", "a") still get one order
}

// Reads exactly `count` bytes at `offset`, or reports failure on cancellation, a read
// error, or the end of the file coming early.
bool readExactly(int fd, int64_t offset, size_t count, unsigned char* buffer,
                 const ScanCancellation& cancellation) {
    size_t filled = 0;
    while (filled < count) {
        if (cancellation.cancelled()) return false;
        const ssize_t got = ::pread(fd, buffer + filled, count - filled,
                                    static_cast<off_t>(offset) + static_cast<off_t>(filled));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        filled += static_cast<size_t>(got);
    }
    return true;
}

bool descriptorUnchanged(const DuplicateFile& file, int fd) {
    int error = 0;
    const auto status = platform::statDescriptor(fd, error);
    return status && DuplicateScanner::metadataMatches(file, *status);
}

bool isUnchangedAt(const DuplicateFile& file, const platform::PathAnchor& anchor) {
    int error = 0;
    const auto status = platform::statAt(anchor.folder(), anchor.rest(), false, error);
    return status && DuplicateScanner::metadataMatches(file, *status);
}

// The reported groups: members that still match their snapshot (the others count as
// unreadable), at least two of them, not one family of untouched clones; files in
// Finder order, groups by extra bytes (most first) and then id.
std::vector<DuplicateGroup> buildGroups(const std::vector<DuplicateCandidate>& candidates,
                                        const DigestGroups& digestGroups,
                                        const ClonedFileSpace::Query& cloneQuery,
                                        int64_t& unreadable) {
    std::vector<DuplicateGroup> groups;
    for (const auto& [key, members] : digestGroups) {
        DuplicateGroup group;
        for (size_t index : members) {
            const DuplicateFile& file = candidates[index].file;
            if (DuplicateScanner::isUnchanged(file)) {
                group.files.push_back(file);
            } else {
                ++unreadable;
            }
        }
        if (group.files.size() < 2) continue;
        if (cloneQuery ? DuplicateScanner::areUnchangedClones(group.files, cloneQuery)
                       : DuplicateScanner::areUnchangedClones(group.files)) {
            continue;
        }
        std::sort(group.files.begin(), group.files.end(), finderOrder);
        group.bytesPerFile = key.size;
        group.digest = key.digest;
        group.id =
            std::to_string(key.size) + "-" + platform::base64(key.digest.data(), key.digest.size());
        groups.push_back(std::move(group));
    }
    std::sort(groups.begin(), groups.end(), [](const DuplicateGroup& a, const DuplicateGroup& b) {
        const int64_t extraA = a.extraBytes();
        const int64_t extraB = b.extraBytes();
        if (extraA != extraB) return extraA > extraB;
        return a.id < b.id;
    });
    return groups;
}

}  // namespace

DuplicateScanner::DuplicateScanner(ClonedFileSpace::Query cloneQuery, DuplicateScanSeams seams)
    : cloneQuery_(std::move(cloneQuery)), seams_(std::move(seams)) {}

std::optional<DuplicateScanResult> DuplicateScanner::scan(
    const std::string& rootPath, const ScanCancellation& cancellation,
    const DuplicateScanProgress& progress) const {
    const std::string root = platform::absolutePath(rootPath);
    int error = 0;
    const auto anchor = platform::PathAnchor::of(root, error);
    if (!anchor) return std::nullopt;
    const platform::UniqueFd rootFd(::openat(anchor->folder(), anchor->rest(),
                                             O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const auto rootStatus = rootFd ? platform::statDescriptor(rootFd.get(), error) : std::nullopt;
    if (!rootStatus) return std::nullopt;
    const DuplicateWalkRules rules(root, rootStatus->device);

    auto collected = collect(root, {rootStatus->device, rootStatus->inode}, rules, cancellation,
                             progress, seams_);
    if (!collected) return std::nullopt;
    int64_t unreadable = collected->unreadable;
    const int64_t filesVisited = collected->filesVisited;
    const std::vector<DuplicateCandidate> sampling = selectCandidates(*collected);

    const auto sampleDigests =
        hashCandidates(sampling, true, DuplicateScanPhase::sampling, samplingWorkers, nullptr,
                       cancellation, progress, seams_);
    if (!sampleDigests) return std::nullopt;
    // Largest sizes first, so the last file handed out is a small one and neither
    // verifying worker is left alone with a long read at the end. A group's files are
    // handed out one after another, so both workers read the same group and a difference
    // stops both reads.
    std::vector<DuplicateCandidate> verifying;
    std::vector<size_t> groupSizes;
    const DigestGroups sampleGroups = groupByDigest(sampling, *sampleDigests, nullptr, unreadable);
    for (auto group = sampleGroups.rbegin(); group != sampleGroups.rend(); ++group) {
        for (size_t index : group->second)
            verifying.push_back(sampling[index]);
        groupSizes.push_back(group->second.size());
    }

    DuplicatePrefixBoard board(groupSizes);
    const auto fullDigests =
        hashCandidates(verifying, false, DuplicateScanPhase::verifying, verifyingWorkers, &board,
                       cancellation, progress, seams_);
    if (!fullDigests) return std::nullopt;
    const DigestGroups fullGroups = groupByDigest(verifying, *fullDigests, &board, unreadable);
    if (cancellation.cancelled()) return std::nullopt;

    DuplicateScanResult result;
    result.groups = buildGroups(verifying, fullGroups, cloneQuery_, unreadable);
    for (const auto& group : result.groups) {
        result.extraBytes = saturatingAdd(result.extraBytes, group.extraBytes());
        for (const auto& file : group.files)
            result.fileBytesByPath[file.path] = group.bytesPerFile;
    }
    result.revision = platform::randomUuid();
    result.filesVisited = filesVisited;
    result.unreadableFiles = unreadable;
    result.scope = root;
    result.scannedAt = std::chrono::system_clock::now();
    return result;
}

bool DuplicateScanner::areUnchangedClones(const std::vector<DuplicateFile>& files) {
    return areUnchangedClones(files, &ClonedFileSpace::sharing);
}

bool DuplicateScanner::areUnchangedClones(const std::vector<DuplicateFile>& files,
                                          const ClonedFileSpace::Query& query) {
    if (files.empty()) return false;
    std::optional<ClonedFileSpace::Sharing> first;
    for (const auto& file : files) {
        const auto sharing = query(file.path);
        if (!sharing || sharing->privateBytes != 0) return false;
        if (!first) {
            if (sharing->cloneCount < 2) return false;
            first = sharing;
        } else if (sharing->cloneID != first->cloneID) {
            return false;
        }
    }
    return true;
}

bool DuplicateScanner::metadataMatches(const DuplicateFile& file,
                                       const platform::FileStatus& status) {
    return status.isRegularFile() && status.device == file.device && status.inode == file.inode &&
           status.size == file.bytes && status.modified.seconds == file.modifiedSeconds &&
           status.modified.nanoseconds == file.modifiedNanoseconds &&
           status.changed.seconds == file.changedSeconds &&
           status.changed.nanoseconds == file.changedNanoseconds &&
           status.created.seconds == file.createdSeconds &&
           status.created.nanoseconds == file.createdNanoseconds;
}

bool DuplicateScanner::isUnchanged(const DuplicateFile& file) {
    int error = 0;
    const auto anchor = platform::PathAnchor::of(file.path, error);
    return anchor && isUnchangedAt(file, *anchor);
}

std::optional<Sha256Digest> DuplicateScanner::hash(const DuplicateFile& file, bool sampled,
                                                   const ScanCancellation& cancellation,
                                                   const DuplicateScanSeams& seams,
                                                   const PrefixCheck& stillNeeded) {
    int error = 0;
    const auto anchor = platform::PathAnchor::of(file.path, error);
    if (!anchor || !isUnchangedAt(file, *anchor)) return std::nullopt;
    if (seams.beforeOpen) seams.beforeOpen();
    // Non-blocking, so that a pipe swapped in since the status check cannot hold this
    // thread in open() for good (the trash executor's hash is never cancelled). Reads of a
    // regular file do not change, and the descriptor check rejects anything else.
    platform::UniqueFd fd(::openat(anchor->folder(), anchor->rest(),
                                   O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    if (!fd || !descriptorUnchanged(file, fd.get())) return std::nullopt;

    // One buffer per thread: hashing threads live for one phase, and a caller that hashes
    // one file after another reuses it.
    thread_local std::vector<unsigned char> buffer;
    platform::Sha256 digest;
    if (sampled) {
        buffer.resize(sampleBytes);
        const auto feedSample = [&](int64_t offset) {
            if (!readExactly(fd.get(), offset, sampleBytes, buffer.data(), cancellation))
                return false;
            digest.update(buffer.data(), sampleBytes);
            if (seams.afterRead) seams.afterRead();
            return true;
        };
        if (!feedSample(0)) return std::nullopt;
        if (file.bytes >= middleSampleFloor && !feedSample(file.bytes / 2 - sampleBytes / 2)) {
            return std::nullopt;
        }
        if (!feedSample(std::max<int64_t>(file.bytes - sampleBytes, 0))) return std::nullopt;
    } else {
        buffer.resize(chunkBytes);
        ::posix_fadvise(fd.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
        for (int64_t offset = 0; offset < file.bytes;) {
            const auto chunk = static_cast<size_t>(std::min(chunkBytes, file.bytes - offset));
            if (!readExactly(fd.get(), offset, chunk, buffer.data(), cancellation))
                return std::nullopt;
            digest.update(buffer.data(), chunk);
            if (seams.afterRead) seams.afterRead();
            if (stillNeeded && !stillNeeded(digest.peek())) return std::nullopt;
            offset += static_cast<int64_t>(chunk);
        }
    }
    if (cancellation.cancelled() || !descriptorUnchanged(file, fd.get()) ||
        !DuplicateScanner::isUnchanged(file)) {
        return std::nullopt;
    }
    return digest.finish();
}

}  // namespace veldan
