#include "devcleanup/DevCleanupTrashExecutor.hpp"

#include <cerrno>
#include <optional>
#include <utility>

#include "devcleanup/DevCleanupScanner.hpp"
#include "platform/DirectoryWithoutLinks.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uptime.hpp"
#include "platform/Uuid.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

constexpr const char* outsideScope = "Outside the selected search folder.";
constexpr const char* notMeasured = "This folder was not measured completely. Scan again.";
constexpr const char* redirected = "A folder in this path now points elsewhere. Scan again.";
constexpr const char* noLongerMatches = "This folder changed or no longer matches. Scan again.";
constexpr const char* contentsChanged =
    "Files inside this folder changed or could not be read. Scan again.";
constexpr const char* changedDuringVerification =
    "This folder changed during verification. Scan again.";
constexpr const char* movedDetail = "Moved to Trash";
constexpr double heartbeatInterval = 0.35;

// One selected folder on its way to the Trash: the checks in their order, each
// returning the reason it stays, or nothing to go on.
class FolderMove {
public:
    FolderMove(const DevCleanupItem& item, const DevCleanupMoveSeams& seams)
        : item_(item),
          seams_(seams),
          parentPath_(platform::parentPath(item.path)),
          name_(platform::lastPathComponent(item.path)) {}

    std::optional<const char*> checkLocation(const std::string& scope) const {
        const std::string standardized = platform::standardizePath(item_.path);
        if (item_.path == "/" || scope.empty() || !platform::isStrictlyUnder(standardized, scope)) {
            return outsideScope;
        }
        return std::nullopt;
    }

    std::optional<const char*> checkMeasuredCompletely() const {
        if (item_.unreadableItems != 0) return notMeasured;
        return std::nullopt;
    }

    // Opens the parent folder from "/" without following any link; the descriptor is
    // what every later check and the move itself work through.
    std::optional<const char*> checkReachedWithoutLinks() {
        if (platform::standardizePath(item_.path) != item_.path) return redirected;
        int error = 0;
        parent_ = platform::openDirectoryWithoutLinks(parentPath_, error);
        if (!parent_) {
            if (error == ELOOP || error == ENOTDIR) return redirected;
            return noLongerMatches;  // gone, or no longer reachable at all
        }
        parentStatus_ = platform::statDescriptor(parent_.get(), error);
        if (!parentStatus_) return noLongerMatches;
        const auto status = platform::statAt(parent_.get(), name_.c_str(), false, error);
        if (status && status->isSymbolicLink()) return redirected;
        return std::nullopt;
    }

    std::optional<const char*> checkSameFolder() const {
        if (!isSameFolder() || !isSameKind()) return noLongerMatches;
        return std::nullopt;
    }

    std::optional<const char*> checkContents(const DevContentsProgress& heartbeat) const {
        if (!DevCleanupScanner::stillMatchesContentsAt(parent_.get(), name_, item_, heartbeat)) {
            return contentsChanged;
        }
        return std::nullopt;
    }

    // The walk took a while: the path must still lead through the same parent folder to
    // the same folder of the same kind.
    std::optional<const char*> checkStillInPlace() const {
        if (seams_.afterContentsCheck) seams_.afterContentsCheck();
        int error = 0;
        const auto again = platform::openDirectoryWithoutLinks(parentPath_, error);
        const auto status = again ? platform::statDescriptor(again.get(), error) : std::nullopt;
        if (!status || status->device != parentStatus_->device ||
            status->inode != parentStatus_->inode || !isSameFolder() || !isSameKind()) {
            return changedDuringVerification;
        }
        return std::nullopt;
    }

    // The Trash checks once more, right before its rename, that the folder is unchanged
    // and that nothing is mounted inside it (that sentence reaches the user as it is).
    DevCleanupMove move() const {
        const auto outcome =
            platform::Trash::moveItem(parent_.get(), parentPath_, name_,
                                      {item_.identity(), platform::IdentityCheck::unchanged});
        if (outcome.moved) return {item_.path, true, movedDetail};
        switch (outcome.refusal) {
            case platform::TrashRefusal::redirected:
                return {item_.path, false, redirected};
            case platform::TrashRefusal::missing:
            case platform::TrashRefusal::changed:
                return {item_.path, false, changedDuringVerification};
            default:
                return {item_.path, false, outcome.reason};
        }
    }

private:
    bool isSameFolder() const {
        int error = 0;
        const auto status = platform::statAt(parent_.get(), name_.c_str(), false, error);
        return status && item_.isSameFolder(*status);
    }
    bool isSameKind() const {
        return DevCleanupScanner::kindAt(parent_.get(), name_) == item_.kind;
    }

    const DevCleanupItem& item_;
    const DevCleanupMoveSeams& seams_;
    std::string parentPath_;
    std::string name_;
    platform::UniqueFd parent_;
    std::optional<platform::FileStatus> parentStatus_;
};

}  // namespace

DevCleanupTrashExecutor::DevCleanupTrashExecutor(AfterMove afterMove, DevCleanupMoveSeams seams)
    : afterMove_(std::move(afterMove)), seams_(std::move(seams)) {}

DevCleanupReport DevCleanupTrashExecutor::run(const std::vector<DevCleanupItem>& items,
                                              const std::string& scope,
                                              const Progress& progress) const {
    DevCleanupReport report;
    report.id = platform::randomUuid();
    const auto total = static_cast<int64_t>(items.size());
    const std::string searched = scope.empty() ? scope : platform::standardizePath(scope);
    for (int64_t done = 0; done < total; ++done) {
        const DevCleanupItem& item = items[static_cast<size_t>(done)];
        const auto phase = [&](DevCleanupMovePhase now) {
            if (progress) progress(done, total, now);
        };
        double lastBeat = platform::uptimeSeconds();
        const DevContentsProgress heartbeat = [&] {
            const double now = platform::uptimeSeconds();
            if (now - lastBeat < heartbeatInterval) return;
            lastBeat = now;
            phase(DevCleanupMovePhase::checking);
        };
        phase(DevCleanupMovePhase::checking);
        FolderMove folder(item, seams_);
        std::optional<const char*> refusal = folder.checkLocation(searched);
        if (!refusal) refusal = folder.checkMeasuredCompletely();
        if (!refusal) refusal = folder.checkReachedWithoutLinks();
        if (!refusal) refusal = folder.checkSameFolder();
        if (!refusal) refusal = folder.checkContents(heartbeat);
        if (!refusal) refusal = folder.checkStillInPlace();
        DevCleanupMove move{item.path, false, {}};
        if (refusal) {
            move.detail = *refusal;
        } else {
            phase(DevCleanupMovePhase::moving);
            move = folder.move();
        }
        if (move.moved) report.bytesMoved = saturatingAdd(report.bytesMoved, item.bytes);
        report.moves.push_back(std::move(move));
        if (progress) progress(done + 1, total, DevCleanupMovePhase::finished);
    }
    if (afterMove_ && report.movedCount() > 0) afterMove_(report);
    return report;
}

}  // namespace veldan
