#include "devcleanup/DevFolderChain.hpp"

#include <fcntl.h>

#include "platform/FileStatus.hpp"

namespace veldan {

SharedFd reopenParentFolder(const SharedFd& child, const FolderIdentity& expected) {
    if (!child || !*child) return nullptr;
    platform::UniqueFd parent(::openat(child->get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent) return nullptr;
    int error = 0;
    const auto status = platform::statDescriptor(parent.get(), error);
    if (!status || FolderIdentity{status->device, status->inode} != expected) return nullptr;
    return std::make_shared<const platform::UniqueFd>(std::move(parent));
}

}  // namespace veldan
