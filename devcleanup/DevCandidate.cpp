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

platform::ItemIdentity DevCandidate::identity() const {
    return platform::ItemIdentity{static_cast<uint64_t>(device),
                                  static_cast<uint64_t>(inode),
                                  {createdSeconds, createdNanoseconds},
                                  {modifiedSeconds, modifiedNanoseconds},
                                  {changedSeconds, changedNanoseconds}};
}

bool DevCandidate::isSameFolder(const platform::FileStatus& status) const {
    return status.isDirectory() && identity().isUnchanged(status);
}

}  // namespace veldan
