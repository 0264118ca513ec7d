#pragma once
// Owns one file descriptor and closes it on destruction. Move-only.

#include <string>
#include <utility>

namespace veldan::platform {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd();

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    explicit operator bool() const { return valid(); }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd = -1);

private:
    int fd_ = -1;
};

// Opens a folder for listing relative to `parentFd` without following a final
// symbolic link. Returns an invalid descriptor and sets `error` on failure.
UniqueFd openDirectoryAt(int parentFd, const char* name, int& error);
// Opens a folder by path, following links in every component (a scan root may be a link).
UniqueFd openDirectory(const std::string& path, int& error);

}  // namespace veldan::platform
