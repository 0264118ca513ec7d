#include "devcleanup/DevCandidate.hpp"

#include <utility>

namespace veldan {

DevCandidate DevCandidate::from(std::string path, DevCleanupKind kind,
                                const platform::FileStatus& status) {
    return DevCandidate{std::move(path),
                        kind,
                        static_cast<int64_t>(status.device),
                        static_cast<int64_t>(status.inode),
                        status.modified.seconds,
                        status.modified.nanoseconds,
                        status.changed.seconds,
                        status.changed.nanoseconds,
                        status.created.seconds,
                        status.created.nanoseconds};
}

bool DevCandidate::isSameFolder(const platform::FileStatus& status) const {
    return status.isDirectory() && static_cast<int64_t>(status.device) == device &&
           static_cast<int64_t>(status.inode) == inode &&
           status.modified == platform::Timestamp{modifiedSeconds, modifiedNanoseconds} &&
           status.changed == platform::Timestamp{changedSeconds, changedNanoseconds} &&
           status.created == platform::Timestamp{createdSeconds, createdNanoseconds};
}

}  // namespace veldan
