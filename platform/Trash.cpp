#include "platform/Trash.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "platform/DescriptorIo.hpp"
#include "platform/DirectoryWithoutLinks.hpp"
#include "platform/ErrorText.hpp"
#include "platform/FileStatus.hpp"
#include "platform/MountPoints.hpp"
#include "platform/Paths.hpp"
#include "platform/TrashDirectorySizes.hpp"
#include "platform/TrashFolder.hpp"
#include "platform/TrashInfo.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

namespace {

constexpr std::string_view infoSuffix = ".trashinfo";
constexpr size_t maximumNameBytes = 255;
// "name", "name.2", "name.3", ...: far more than any Trash holds under one name.
constexpr int maximumAttempts = 100000;

TrashOutcome refused(TrashRefusal refusal, std::string reason) {
    return TrashOutcome{false, {}, refusal, std::move(reason)};
}

std::string withError(const char* sentenceStart, int error) {
    return std::string(sentenceStart) + " (" + errorText(error) + ").";
}

// The name inside files/ for attempt `n`. The info file adds ".trashinfo", so long names
// are shortened to fit, cutting before a UTF-8 continuation byte rather than inside a
// character. The original name is kept whole in the info file's Path=.
std::string trashName(const std::string& name, int attempt) {
    const std::string suffix = attempt == 1 ? std::string() : "." + std::to_string(attempt);
    const size_t room = maximumNameBytes - infoSuffix.size() - suffix.size();
    std::string base = name;
    if (base.size() > room) {
        // A UTF-8 character is at most four bytes, so a cut steps back at most three;
        // bytes that are not UTF-8 at all are simply cut at the room left.
        size_t cut = room;
        while (cut > room - 3 && (static_cast<unsigned char>(base[cut]) & 0xC0) == 0x80)
            --cut;
        if ((static_cast<unsigned char>(base[cut]) & 0xC0) == 0x80) cut = room;
        base.resize(cut);
    }
    return base + suffix;
}

bool matches(const ItemIdentity& expected, IdentityCheck check, const FileStatus& now) {
    return check == IdentityCheck::unchanged ? expected.isUnchanged(now) : expected.isSameItem(now);
}

// Path= is absolute for the home trash and relative to the top directory for a
// volume's trash, so the volume can be mounted elsewhere and still be restored.
std::string originalLocation(const TrashFolder& trash, const std::string& parent,
                             const std::string& name) {
    const std::string full = joinPath(parent, name);
    if (trash.topdir.empty()) return full;
    if (trash.topdir == "/") return full.substr(1);
    return full.substr(trash.topdir.size() + 1);
}

struct MoveRequest {
    int parentFd;
    const std::string& parent;  // resolved path of parentFd
    const std::string& name;
    const ItemIdentity& expected;
    IdentityCheck check;
    const std::function<void()>& beforeRename;
};

// renameat2 with RENAME_NOREPLACE. A file system without that flag gets a plain rename
// once nothing is seen under the new name; in a folder that others can write, a name
// taken between that look and the rename is then replaced.
int renameWithoutReplacing(int fromFd, const char* from, int toFd, const char* to) {
    if (::renameat2(fromFd, from, toFd, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL) return -1;
    int error = 0;
    if (statAt(toFd, to, false, error) || error != ENOENT) {
        errno = EEXIST;
        return -1;
    }
    return ::renameat(fromFd, from, toFd, to);
}

// Reserves a name with the info file, checks the item once more and renames it.
TrashOutcome moveInto(const TrashFolder& trash, const MoveRequest& request) {
    const std::string info =
        trashInfoText(originalLocation(trash, request.parent, request.name), std::time(nullptr));
    for (int attempt = 1; attempt <= maximumAttempts; ++attempt) {
        const std::string name = trashName(request.name, attempt);
        const std::string infoName = name + std::string(infoSuffix);
        UniqueFd infoFile(::openat(trash.info.get(), infoName.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!infoFile) {
            if (errno == EEXIST) continue;
            return refused(TrashRefusal::failed,
                           withError("Could not record the item in the Trash", errno));
        }
        auto forget = [&] { ::unlinkat(trash.info.get(), infoName.c_str(), 0); };
        if (!writeAll(infoFile.get(), info)) {
            const int error = errno;
            forget();
            return refused(TrashRefusal::failed,
                           withError("Could not record the item in the Trash", error));
        }
        struct stat infoStatus {};
        ::fstat(infoFile.get(), &infoStatus);
        infoFile.reset();

        int error = 0;
        auto now = statAt(request.parentFd, request.name.c_str(), false, error);
        if (!now || !matches(request.expected, request.check, *now)) {
            forget();
            return refused(TrashRefusal::changed,
                           "The item changed just before the move, so it stayed in place.");
        }
        // Mounted is what could appear since any earlier look; it is the last thing seen.
        if (auto mounted = mountRefusal(joinPath(request.parent, request.name))) {
            forget();
            return refused(TrashRefusal::holdsMount, std::move(*mounted));
        }
        if (request.beforeRename) request.beforeRename();
        // Without RENAME_NOREPLACE the info file still reserves the name, and files/ is
        // private to this user, so only a leftover can be in the way of the plain rename.
        const int moved = renameWithoutReplacing(request.parentFd, request.name.c_str(),
                                                 trash.files.get(), name.c_str());
        if (moved != 0) {
            const int renameError = errno;
            forget();
            if (renameError == EEXIST || renameError == ENOTEMPTY) continue;
            if (renameError == EXDEV) {
                return refused(
                    TrashRefusal::failed,
                    "The item is on another mount than its Trash, so it stayed in place.");
            }
            return refused(TrashRefusal::failed,
                           withError("Could not move the item to Trash", renameError));
        }
        // The check and the rename are two calls: someone who can write the parent folder
        // may have put another entry under the name in between, and that one moved. It
        // goes back where it was; only the verified item is ever trashed.
        // The rename itself changes the status time, so only the item is compared here.
        auto arrived = statAt(trash.files.get(), name.c_str(), false, error);
        if (!arrived || !request.expected.isSameItem(*arrived)) {
            if (renameWithoutReplacing(trash.files.get(), name.c_str(), request.parentFd,
                                       request.name.c_str()) != 0) {
                return refused(TrashRefusal::replacementInTrash,
                               "The item was replaced just before the move and the replacement "
                               "could not be put back; restore it from the Trash.");
            }
            forget();
            return refused(TrashRefusal::changed,
                           "The item was replaced just before the move, so nothing was moved to "
                           "Trash.");
        }
        if (now->isDirectory()) {
            recordDirectorySize(trash.folder.get(), name,
                                diskUsageAt(trash.files.get(), name.c_str()),
                                infoStatus.st_mtim.tv_sec);
        }
        return TrashOutcome{
            true, joinPath(joinPath(trash.path, "files"), name), TrashRefusal::none, {}};
    }
    return refused(TrashRefusal::failed, "The Trash already holds too many items with this name.");
}

}  // namespace

TrashOutcome Trash::moveItem(int parentFd, const std::string& parentPath, const std::string& name,
                             const TrashMove& move) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return refused(TrashRefusal::notAnItem,
                       "Only a named item inside a folder can be moved to Trash.");
    }
    int error = 0;
    auto parentStatus = statDescriptor(parentFd, error);
    const std::string parent = resolveSymlinks(parentPath);
    auto named = statPath(parent, true);
    if (!parentStatus || !named || !ItemIdentity::of(*named).isSameItem(*parentStatus)) {
        return refused(TrashRefusal::redirected,
                       "The folder that holds the item changed, so it stayed in place.");
    }
    auto item = statAt(parentFd, name.c_str(), false, error);
    if (!item) {
        return refused(TrashRefusal::missing,
                       "The item no longer exists, so nothing was moved to Trash.");
    }
    if (move.expected && !matches(*move.expected, move.check, *item)) {
        return refused(TrashRefusal::changed,
                       "The item changed just before the move, so it stayed in place.");
    }
    const ItemIdentity expected = move.expected.value_or(ItemIdentity::of(*item));
    const MoveRequest request{parentFd, parent, name, expected, move.check, move.beforeRename};

    // The Trash is chosen by the mount that holds the item, not by its device: a bind
    // mount of the home file system is another mount, and a rename cannot leave a mount.
    std::string problem;
    std::optional<TrashFolder> trash;
    const std::string top = mountPointOf(parent);
    if (top == homeTrashMountPoint()) {
        trash = openHomeTrash(problem);
    } else {
        trash = openVolumeTrash(top, ::getuid(), problem);
    }
    if (!trash) {
        return refused(TrashRefusal::noTrash,
                       "No usable Trash exists on the file system that holds the item (" + problem +
                           "), so it stayed in place.");
    }
    return moveInto(*trash, request);
}

TrashOutcome Trash::moveItem(const std::string& path, const TrashMove& move) {
    const std::string standardized = standardizePath(path);
    const std::string name(lastPathComponent(standardized));
    if (standardized.empty() || standardized.front() != '/' || name.empty()) {
        return refused(TrashRefusal::notAnItem,
                       "Only a named item inside a folder can be moved to Trash.");
    }
    const std::string parent = parentPath(standardized);
    int error = 0;
    UniqueFd parentFd = openDirectoryWithoutLinks(parent, error);
    if (!parentFd) {
        if (error == ELOOP || error == ENOTDIR) {
            return refused(TrashRefusal::redirected,
                           "A folder on the way to the item is now a link or a file, so it "
                           "stayed in place.");
        }
        if (error == ENOENT) {
            return refused(TrashRefusal::missing,
                           "The item no longer exists, so nothing was moved to Trash.");
        }
        return refused(TrashRefusal::failed,
                       withError("Could not open the folder that holds the item", error));
    }
    return moveItem(parentFd.get(), parent, name, move);
}

}  // namespace veldan::platform
