#include "scan/ScanFolderIdentity.hpp"

namespace veldan {

std::optional<ScanFolderIdentity> ScanFolderIdentity::read(const std::string& path) {
    auto status = platform::statPath(path, false);
    if (!status) return std::nullopt;
    return of(*status);
}

std::optional<ScanFolderIdentity> ScanFolderIdentity::of(const platform::FileStatus& status) {
    if (!status.isDirectory()) return std::nullopt;
    return ScanFolderIdentity{static_cast<int64_t>(status.device),
                              static_cast<int64_t>(status.inode),
                              status.modified.seconds,
                              status.modified.nanoseconds,
                              status.changed.seconds,
                              status.changed.nanoseconds,
                              status.created.seconds,
                              status.created.nanoseconds};
}

platform::ItemIdentity ScanFolderIdentity::item() const {
    return platform::ItemIdentity{static_cast<uint64_t>(device),
                                  static_cast<uint64_t>(inode),
                                  {createdSeconds, createdNanoseconds},
                                  {modifiedSeconds, modifiedNanoseconds},
                                  {changedSeconds, changedNanoseconds}};
}

bool ScanFolderIdentity::isSameFolder(const platform::FileStatus& now) const {
    return now.isDirectory() && item().isSameItem(now);
}

}  // namespace veldan
