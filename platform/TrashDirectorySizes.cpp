#include "platform/TrashDirectorySizes.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "platform/DescriptorIo.hpp"
#include "platform/DirectoryReader.hpp"
#include "platform/FileStatus.hpp"
#include "platform/TrashInfo.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uuid.hpp"

namespace veldan::platform {

namespace {

// Each level keeps one descriptor open; the limit keeps a hostile tree from using up
// the process's descriptors. The cache is then merely low, never wrong in kind.
constexpr int maximumDepth = 256;
constexpr const char* cacheName = "directorysizes";

struct UsageWalk {
    std::vector<char> buffer;
    std::set<std::pair<uint64_t, uint64_t>> linkedFiles;
    int64_t total = 0;

    void add(int64_t bytes) {
        total = bytes > std::numeric_limits<int64_t>::max() - total
                    ? std::numeric_limits<int64_t>::max()
                    : total + bytes;
    }

    void entry(int parentFd, const char* name, int depth) {
        int error = 0;
        auto status = statAt(parentFd, name, false, error, StatDetail::sizes);
        if (!status) return;
        if (!status->isDirectory() && status->linkCount > 1 &&
            !linkedFiles.insert({status->device, status->inode}).second) {
            return;
        }
        add(status->blocks * 512);
        if (!status->isDirectory() || depth >= maximumDepth) return;
        UniqueFd folder = openDirectoryAt(parentFd, name, error);
        if (!folder) return;
        // The listing is read whole before descending so one buffer serves every level.
        std::vector<std::string> names;
        DirectoryReader reader(folder.get(), buffer);
        DirectoryEntryView view;
        while (reader.next(view))
            names.emplace_back(view.name, view.length);
        for (const auto& child : names)
            entry(folder.get(), child.c_str(), depth + 1);
    }
};

}  // namespace

int64_t diskUsageAt(int parentFd, const char* name) {
    UsageWalk walk;
    walk.entry(parentFd, name, 0);
    return walk.total;
}

bool recordDirectorySize(int trashFd, const std::string& trashedName, int64_t bytes,
                         int64_t infoModifiedSeconds) {
    const std::string encoded = percentEncodePath(trashedName);
    std::string kept;
    {
        UniqueFd existing(::openat(trashFd, cacheName, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        if (existing) {
            const std::string text = readAll(existing.get());
            size_t start = 0;
            while (start < text.size()) {
                size_t end = text.find('\n', start);
                if (end == std::string::npos) end = text.size();
                const std::string_view line(text.data() + start, end - start);
                // Line: size, space, modification time, space, encoded name.
                const auto first = line.find(' ');
                const auto second =
                    first == std::string_view::npos ? first : line.find(' ', first + 1);
                const bool sameName =
                    second != std::string_view::npos && line.substr(second + 1) == encoded;
                if (!line.empty() && !sameName) {
                    kept.append(line);
                    kept += '\n';
                }
                start = end + 1;
            }
        }
    }
    kept +=
        std::to_string(bytes) + ' ' + std::to_string(infoModifiedSeconds) + ' ' + encoded + '\n';

    const std::string temporary = std::string(cacheName) + "." + randomUuid();
    UniqueFd out(::openat(trashFd, temporary.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!out) return false;
    const bool written = writeAll(out.get(), kept);
    out.reset();
    if (!written || ::renameat(trashFd, temporary.c_str(), trashFd, cacheName) != 0) {
        ::unlinkat(trashFd, temporary.c_str(), 0);
        return false;
    }
    return true;
}

}  // namespace veldan::platform
