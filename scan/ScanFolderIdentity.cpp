#include "scan/ScanFolderIdentity.hpp"

#include "platform/FileStatus.hpp"

namespace veldan {

std::optional<ScanFolderIdentity> ScanFolderIdentity::read(const std::string& path) {
    auto status = platform::statPath(path, false);
    if (!status || !status->isDirectory()) return std::nullopt;
    return ScanFolderIdentity{static_cast<int64_t>(status->device),
                              static_cast<int64_t>(status->inode),
                              status->modified.seconds,
                              status->modified.nanoseconds,
                              status->changed.seconds,
                              status->changed.nanoseconds};
}

}  // namespace veldan
