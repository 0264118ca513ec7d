#include "platform/UniqueFd.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace veldan::platform {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
}

UniqueFd::~UniqueFd() {
    reset();
}

void UniqueFd::reset(int fd) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = fd;
}

UniqueFd openDirectoryAt(int parentFd, const char* name, int& error) {
    const int fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    error = fd < 0 ? errno : 0;
    return UniqueFd(fd);
}

UniqueFd openDirectory(const std::string& path, int& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    error = fd < 0 ? errno : 0;
    return UniqueFd(fd);
}

}  // namespace veldan::platform
