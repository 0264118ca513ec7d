#include "tests/support/TempDir.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace veldan::test {

namespace {

void removeContents(int dirFd) {
    ::fchmod(dirFd, 0700);
    DIR* dir = ::fdopendir(::dup(dirFd));
    if (!dir) return;
    std::vector<std::string> folders;
    while (auto* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        struct stat status {};
        if (::fstatat(dirFd, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        if (S_ISDIR(status.st_mode)) {
            folders.push_back(name);
        } else {
            ::unlinkat(dirFd, name.c_str(), 0);
        }
    }
    ::closedir(dir);
    for (const auto& name : folders) {
        ::fchmodat(dirFd, name.c_str(), 0700, 0);
        const int child =
            ::openat(dirFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (child >= 0) {
            removeContents(child);
            ::close(child);
        }
        ::unlinkat(dirFd, name.c_str(), AT_REMOVEDIR);
    }
}

}  // namespace

TempDir::TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern =
        std::string(base && base[0] == '/' ? base : "/tmp") + "/veldan-test-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (!::mkdtemp(buffer.data())) throw std::runtime_error("mkdtemp failed");
    path_ = buffer.data();
    ::chmod(path_.c_str(), 0755);  // tests that drop privileges must be able to enter
}

TempDir::~TempDir() {
    removeTree(path_);
}

std::string TempDir::operator/(std::string_view relative) const {
    return path_ + "/" + std::string(relative);
}

void removeTree(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        ::unlink(path.c_str());
        return;
    }
    removeContents(fd);
    ::close(fd);
    ::rmdir(path.c_str());
}

}  // namespace veldan::test
