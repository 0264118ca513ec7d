#include "aistorage/AIStorageFingerprint.hpp"

#include "platform/FileStatus.hpp"

namespace veldan {

namespace {

std::optional<AIStorageFingerprint> fromStatus(const std::optional<platform::FileStatus>& status) {
    if (!status || !status->isDirectory()) return std::nullopt;
    return AIStorageFingerprint{status->device, status->inode, status->created.seconds,
                                status->created.nanoseconds};
}

}  // namespace

std::optional<AIStorageFingerprint> AIStorageFingerprint::read(const std::string& path) {
    return fromStatus(platform::statPath(path, false));
}

std::optional<AIStorageFingerprint> AIStorageFingerprint::ofDescriptor(int fd) {
    int error = 0;
    return fromStatus(platform::statDescriptor(fd, error));
}

}  // namespace veldan
