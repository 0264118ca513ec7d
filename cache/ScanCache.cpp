#include "cache/ScanCache.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "cache/RootIdentity.hpp"
#include "cache/ScanArchive.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/FileContents.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "platform/Sha256.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

constexpr const char* cacheDirectoryTag =
    "Signature: 8a477f597d28d172789f06886806bc55\n"
    "# This file is a cache directory tag created by Veldan.\n"
    "# For information about cache directory tags, see https://bford.info/cachedir/\n";

// A temporary file older than this was left by a save that never finished (the process
// was killed); a younger one may belong to a save under way in another process.
constexpr auto abandonedAge = std::chrono::minutes(10);

std::string standardizedScope(const std::string& scope) {
    return platform::absolutePath(scope);
}

// Backup and indexing tools skip folders tagged this way; saved maps are regenerable.
void tagCacheFolder(const std::string& folder) {
    const std::string tag = platform::joinPath(folder, "CACHEDIR.TAG");
    platform::UniqueFd fd(
        ::open(tag.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!fd) return;
    const std::string_view text(cacheDirectoryTag);
    if (::write(fd.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        ::unlink(tag.c_str());
    }
}

// Temporary files are named ".veldan-<UUID>.tmp" (writeFileAtomically).
void removeAbandonedTemporaries(const std::string& folder) {
    constexpr std::string_view prefix = ".veldan-";
    constexpr std::string_view suffix = ".tmp";
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return;
    const auto now = std::chrono::system_clock::now();
    while (auto* entry = ::readdir(dir)) {
        const std::string_view name(entry->d_name);
        if (name.size() <= prefix.size() + suffix.size() || !name.starts_with(prefix) ||
            !name.ends_with(suffix)) {
            continue;
        }
        struct stat status {};
        if (::fstatat(::dirfd(dir), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        if (!S_ISREG(status.st_mode)) continue;
        const auto modified =
            std::chrono::system_clock::time_point(std::chrono::seconds(status.st_mtim.tv_sec));
        if (now - modified > abandonedAge) ::unlinkat(::dirfd(dir), entry->d_name, 0);
    }
    ::closedir(dir);
}

}  // namespace

ScanCache::ScanCache(std::string folder) : folder_(std::move(folder)) {}

ScanCache& ScanCache::shared() {
    // Saving uses libcrypto (the digest, the temporary file's random name), which tears
    // itself down when the process exits. Starting it before the cache exists makes the
    // cache's destructor, which finishes the queued saves, run before that teardown.
    [[maybe_unused]] static const bool cryptoStarted = (platform::Sha256::of({}), true);
    static ScanCache cache;
    return cache;
}

std::string ScanCache::scopeDigest(const std::string& scope) {
    return platform::lowercaseHex(platform::Sha256::of(standardizedScope(scope)));
}

std::string ScanCache::folder() const {
    return folder_.empty() ? platform::joinPath(platform::cacheHome(), "Veldan/Scans") : folder_;
}

std::string ScanCache::fileFor(const std::string& scope) const {
    return platform::joinPath(folder(), scopeDigest(scope) + ".plist");
}

void ScanCache::save(const ScanSnapshot& snapshot, const std::string& scope) {
    save(std::make_shared<const ScanSnapshot>(snapshot), scope);
}

void ScanCache::save(std::shared_ptr<const ScanSnapshot> snapshot, const std::string& scope) {
    // The location is taken now, in the environment of the caller.
    const std::string file = fileFor(scope);
    queue_.async(
        [this, snapshot = std::move(snapshot), scope, file] { write(*snapshot, scope, file); });
}

void ScanCache::drain() {
    queue_.drain();
}

ScanCache::SaveOutcome ScanCache::saveNow(const ScanSnapshot& snapshot,
                                          const std::string& scope) const {
    return write(snapshot, scope, fileFor(scope));
}

ScanCache::SaveOutcome ScanCache::write(const ScanSnapshot& snapshot, const std::string& scope,
                                        const std::string& file) const {
    const std::string scopePath = standardizedScope(scope);
    auto identity = RootIdentity::read(scopePath);
    if (!identity) return SaveOutcome::folderMissing;
    const std::string cacheFolder = platform::parentPath(file);
    if (platform::createFolders(cacheFolder, 0700) != 0) return SaveOutcome::cacheUnavailable;
    tagCacheFolder(cacheFolder);

    removeAbandonedTemporaries(cacheFolder);
    // Streamed into the file: a large map is not held a second time as one block.
    auto result = platform::PropertyListWriter::WriteResult::sinkFailed;
    const auto failure = platform::writeFileAtomically(
        file,
        [&](const platform::ContentSink& sink) {
            result = ScanArchive::write(scopePath, *identity, snapshot, maximumFileBytes, sink);
            return result == platform::PropertyListWriter::WriteResult::written;
        },
        platform::Durability::regenerable, platform::LinkAtPath::replace);
    if (result == platform::PropertyListWriter::WriteResult::tooLarge) return SaveOutcome::tooLarge;
    return failure ? SaveOutcome::writeFailed : SaveOutcome::saved;
}

std::optional<ScanSnapshot> ScanCache::load(const std::string& scope) const {
    const std::string scopePath = standardizedScope(scope);
    // Read rather than mapped: a file cut short by another program while mapped would
    // crash the reader instead of failing to decode.
    auto contents = platform::readRegularFile(fileFor(scopePath), maximumFileBytes);
    if (!contents) return std::nullopt;
    auto archive = ScanArchive::decode(*contents);
    if (!archive || archive->scopePath != scopePath) return std::nullopt;
    // The folder must still be the one that was mapped, not another one under its name.
    auto identity = RootIdentity::read(scopePath);
    if (!identity || *identity != archive->rootIdentity) return std::nullopt;
    return std::move(archive->snapshot);
}

void ScanCache::markStale(const std::string& scope,
                          std::chrono::system_clock::time_point now) const {
    // Preferences keep milliseconds; rounding up keeps the mark from moving before a
    // snapshot that finished in the same millisecond.
    const auto mark = std::chrono::ceil<std::chrono::milliseconds>(now);
    platform::Preferences::setDate(staleKeyPrefix + scopeDigest(scope),
                                   std::chrono::system_clock::time_point(mark));
}

void ScanCache::markStaleHolding(const std::vector<std::string>& paths) const {
    const auto now = std::chrono::system_clock::now();
    std::set<std::string> marked;
    for (const auto& path : paths) {
        // Saved maps are found by name, so each folder on the way up is asked for one.
        std::string folder = standardizedScope(path);
        for (;;) {
            if (!marked.count(folder) && platform::statPath(fileFor(folder), false)) {
                markStale(folder, now);
                marked.insert(folder);
            }
            if (folder == "/") break;
            folder = platform::parentPath(folder);
        }
    }
}

bool ScanCache::needsRefresh(const ScanSnapshot& snapshot, const std::string& scope) const {
    auto mark = platform::Preferences::date(staleKeyPrefix + scopeDigest(scope));
    return mark && *mark >= snapshot.finishedAt;
}

}  // namespace veldan
