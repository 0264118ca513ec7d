#pragma once
// Finds exact copies of files under one folder without changing anything.
//
// Protocol, three phases:
//  1. collecting: four workers walk the tree (never following links, never leaving the
//     root's device, never entering packages or the Trash) and bucket every regular file
//     of at least 1,000,000 bytes by its exact size; a hard-linked inode enters once.
//     Folders are opened relative to their parent's descriptor, and files and folders
//     reached by path are looked up in pieces, so trees deeper than PATH_MAX are compared.
//  2. sampling: every file whose size is shared by another inode gets a SHA-256 of two
//     64 KiB samples (first and last; files of 16 MiB or more a third, from the middle),
//     up to four files at a time.
//  3. verifying: files whose size and sample digest still agree get a SHA-256 of their
//     whole content, at most two files at a time, in 1 MiB reads. A file whose content is
//     shown to differ from every other file of its group (DuplicatePrefixBoard) stops
//     being read; it could not be reported, and is not counted unreadable.
// Before and after every hash the file's lstat and fstat must still match the snapshot
// taken while collecting; a file that changed is dropped and counted unreadable.
//
// Contract: scan() is synchronous on the caller's thread (it adds its own workers) and
// returns nothing when the root cannot be used or the search was cancelled, never a
// partial result. Progress is called from worker threads. A DuplicateScanner is
// immutable and may run several searches at once.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateScanPhase.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Sha256.hpp"
#include "scan/ClonedFileSpace.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

// Points where tests step in, on the thread doing the work, to change a file or cancel
// and prove that the checks which follow hold. The product leaves them empty.
struct DuplicateScanSeams {
    // While collecting: a folder was listed and its progress reported.
    std::function<void()> afterListing;
    // In hash(): the path's status matched the snapshot; the file is not open yet.
    std::function<void()> beforeOpen;
    // In hash(): a sample or chunk was read.
    std::function<void()> afterRead;
    // How many listed folders the walk keeps open for their subfolders; the others are
    // reached by path. Tests lower it to walk by paths alone.
    int sharedFolderLimit = 192;
};

class DuplicateScanner {
public:
    static constexpr int64_t minimumFileBytes = 1'000'000;
    static constexpr size_t collectingWorkers = 4;
    static constexpr size_t samplingWorkers = 4;
    static constexpr size_t verifyingWorkers = 2;
    static constexpr int64_t sampleBytes = 65'536;
    static constexpr int64_t middleSampleFloor = 16'777'216;
    static constexpr int64_t chunkBytes = 1'048'576;

    // `cloneQuery` answers how a file shares blocks with its clones; empty means the
    // platform's own answer (none on Linux).
    explicit DuplicateScanner(ClonedFileSpace::Query cloneQuery = {},
                              DuplicateScanSeams seams = {});

    std::optional<DuplicateScanResult> scan(const std::string& root,
                                            const ScanCancellation& cancellation,
                                            const DuplicateScanProgress& progress = {}) const;

    // True only for files that are untouched clones of one another: every file answers,
    // the first has a clone count of at least 2, all share its clone id, and none has
    // private bytes. Such a group already shares all its blocks and is not reported.
    static bool areUnchangedClones(const std::vector<DuplicateFile>& files);
    static bool areUnchangedClones(const std::vector<DuplicateFile>& files,
                                   const ClonedFileSpace::Query& query);

    // True when `status` describes a regular file whose device, inode, size and
    // modification, change and birth times (seconds and nanoseconds) equal the snapshot.
    static bool metadataMatches(const DuplicateFile& file, const platform::FileStatus& status);
    // A fresh lstat of the file's path matches its snapshot.
    static bool isUnchanged(const DuplicateFile& file);

    // Asked after every chunk of an entire read with the digest of all that was read so
    // far; false ends the read early.
    using PrefixCheck = std::function<bool(const platform::Sha256Digest& prefix)>;

    // SHA-256 of the sampled or the entire content of `file`, or nothing when the file
    // differs from its snapshot before or after reading, a read fails or comes up short,
    // the search is cancelled, or `stillNeeded` answers false. Blocks the caller for the
    // whole read.
    static std::optional<platform::Sha256Digest> hash(const DuplicateFile& file, bool sampled,
                                                      const ScanCancellation& cancellation,
                                                      const DuplicateScanSeams& seams = {},
                                                      const PrefixCheck& stillNeeded = {});

private:
    ClonedFileSpace::Query cloneQuery_;
    DuplicateScanSeams seams_;
};

}  // namespace veldan
