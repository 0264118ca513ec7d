#include "tests/duplicates/DuplicateTestSupport.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/UniqueFd.hpp"

namespace veldan::test {

void changeByteAt(const std::string& path, int64_t offset) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) throw std::runtime_error("open " + path);
    char byte = 0;
    if (::pread(fd, &byte, 1, offset) != 1) throw std::runtime_error("pread " + path);
    byte = static_cast<char>(byte ^ 0x5a);
    if (::pwrite(fd, &byte, 1, offset) != 1) throw std::runtime_error("pwrite " + path);
    ::close(fd);
}

void setModifiedTime(const std::string& path, int64_t seconds) {
    const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
        throw std::runtime_error("utimensat " + path);
    }
}

std::string writeDeeperThanPathMax(const std::string& top, const std::string& contents,
                                   const std::vector<std::string>& names) {
    platform::UniqueFd folder(::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string path = top;
    const std::string name(60, 'd');
    for (int level = 0; level < 80; ++level) {
        if (::mkdirat(folder.get(), name.c_str(), 0755) != 0) throw std::runtime_error("mkdirat");
        folder = platform::UniqueFd(
            ::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        path += "/" + name;
    }
    for (const auto& file : names) {
        const platform::UniqueFd out(
            ::openat(folder.get(), file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        if (::write(out.get(), contents.data(), contents.size()) !=
            static_cast<ssize_t>(contents.size())) {
            throw std::runtime_error("write " + file);
        }
    }
    return path;
}

std::vector<std::vector<std::string>> groupPaths(const DuplicateScanResult& result) {
    std::vector<std::vector<std::string>> groups;
    for (const auto& group : result.groups) {
        std::vector<std::string> paths;
        for (const auto& file : group.files)
            paths.push_back(file.path);
        groups.push_back(std::move(paths));
    }
    return groups;
}

DuplicateScanProgress ProgressRecorder::callback() {
    return [this](DuplicateScanPhase phase, int64_t completed, int64_t total) {
        std::lock_guard guard(lock_);
        reports_.emplace_back(phase, completed, total);
    };
}

std::vector<ProgressRecorder::Report> ProgressRecorder::reports() const {
    std::lock_guard guard(lock_);
    return reports_;
}

bool ProgressRecorder::saw(DuplicateScanPhase phase) const {
    std::lock_guard guard(lock_);
    for (const auto& report : reports_) {
        if (std::get<0>(report) == phase) return true;
    }
    return false;
}

DuplicateFile fileRecord(const std::string& path, int64_t bytes, int64_t createdSeconds) {
    DuplicateFile file;
    file.path = path;
    file.bytes = bytes;
    file.inode = std::hash<std::string>{}(path);
    file.createdSeconds = createdSeconds;
    return file;
}

DuplicateGroup groupOf(std::vector<DuplicateFile> files) {
    DuplicateGroup group;
    group.bytesPerFile = files.empty() ? 0 : files.front().bytes;
    group.files = std::move(files);
    group.id = std::to_string(group.bytesPerFile) + "-test";
    return group;
}

}  // namespace veldan::test
