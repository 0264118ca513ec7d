#include "cache/RootIdentity.hpp"

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

std::optional<RootIdentity> RootIdentity::read(const std::string& path) {
    auto named = platform::statPath(path, false);
    if (!named) return std::nullopt;
    RootIdentity identity;
    identity.device = static_cast<int64_t>(named->device);
    identity.inode = static_cast<int64_t>(named->inode);
    identity.createdSeconds = named->created.seconds;
    identity.createdNanoseconds = named->created.nanoseconds;
    identity.resolvedPath = platform::resolveSymlinks(path);
    auto resolved = platform::statPath(identity.resolvedPath, false);
    if (!resolved) return std::nullopt;
    identity.resolvedDevice = static_cast<int64_t>(resolved->device);
    identity.resolvedInode = static_cast<int64_t>(resolved->inode);
    identity.resolvedCreatedSeconds = resolved->created.seconds;
    identity.resolvedCreatedNanoseconds = resolved->created.nanoseconds;
    return identity;
}

}  // namespace veldan
