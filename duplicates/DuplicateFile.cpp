#include "duplicates/DuplicateFile.hpp"

#include <utility>

namespace veldan {

DuplicateFile DuplicateFile::snapshot(std::string path, const platform::FileStatus& status) {
    DuplicateFile file;
    file.path = std::move(path);
    file.bytes = status.size;
    file.device = status.device;
    file.inode = status.inode;
    file.modifiedSeconds = status.modified.seconds;
    file.modifiedNanoseconds = status.modified.nanoseconds;
    file.changedSeconds = status.changed.seconds;
    file.changedNanoseconds = status.changed.nanoseconds;
    file.createdSeconds = status.created.seconds;
    file.createdNanoseconds = status.created.nanoseconds;
    return file;
}

}  // namespace veldan
