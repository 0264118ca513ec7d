#pragma once
// The saved map of each scanned folder: one binary property list per folder in
// $XDG_CACHE_HOME/Veldan/Scans/, named by the scope digest, so that the earlier map shows
// at once in the next run while the user decides whether to scan again. Besides the files,
// a stale mark per folder in the preferences ("veldanScanCacheStale." + digest) records
// that the saved map became outdated (after a cleanup, or a scan that was stopped).
//
// The cache never reports an error: a file that is missing, too large, undecodable, of
// another version or scope, or of a folder replaced since, loads as nothing; a save that
// fails leaves the previous file whole.
//
// Contract: save() queues the write on the cache's serial queue ("com.veldan.scan-cache")
// and returns at once, so two saves never interleave; drain() waits for the queue (a
// process must drain before it exits). load() runs on the caller's thread and relies on
// the atomic replace to see a whole file. All members are thread-safe.

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/SerialQueue.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

class ScanCache {
public:
    static constexpr size_t maximumFileBytes = 64 * 1024 * 1024;
    static constexpr const char* staleKeyPrefix = "veldanScanCacheStale.";

    // `folder` holds the cache files; empty means $XDG_CACHE_HOME/Veldan/Scans, looked up
    // at each use.
    explicit ScanCache(std::string folder = {});
    ScanCache(const ScanCache&) = delete;
    ScanCache& operator=(const ScanCache&) = delete;

    // The process's cache, used by every scan.
    static ScanCache& shared();

    // The SHA-256 of the standardized absolute path, 64 lower-case hexadecimal digits.
    static std::string scopeDigest(const std::string& scope);
    std::string folder() const;
    std::string fileFor(const std::string& scope) const;

    void save(const ScanSnapshot& snapshot, const std::string& scope);
    // The same without a copy: the queue keeps the snapshot alive until it is written.
    void save(std::shared_ptr<const ScanSnapshot> snapshot, const std::string& scope);
    void drain();

    // What a save came to; only tests look, the cache itself stays silent.
    enum class SaveOutcome { saved, folderMissing, cacheUnavailable, tooLarge, writeFailed };
    // The save itself, on the caller's thread.
    SaveOutcome saveNow(const ScanSnapshot& snapshot, const std::string& scope) const;

    std::optional<ScanSnapshot> load(const std::string& scope) const;

    // Marks the saved map of `scope` outdated as of `now`.
    void markStale(const std::string& scope, std::chrono::system_clock::time_point now =
                                                 std::chrono::system_clock::now()) const;
    // Marks outdated every saved map whose folder holds (or is) one of `paths`: what a
    // cleanup moved.
    void markStaleHolding(const std::vector<std::string>& paths) const;
    // Whether the scope was marked stale after `snapshot` finished. A mark in the same
    // millisecond as the finish counts as later: outdated is the safe answer.
    bool needsRefresh(const ScanSnapshot& snapshot, const std::string& scope) const;

private:
    SaveOutcome write(const ScanSnapshot& snapshot, const std::string& scope,
                      const std::string& file) const;

    std::string folder_;
    platform::SerialQueue queue_{"com.veldan.scan-cache"};
};

}  // namespace veldan
