#pragma once
// Helpers shared by the duplicate finder's tests: real files with chosen contents, and
// a look at what a search found.

#include <cstdint>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateScanPhase.hpp"

namespace veldan::test {

// Overwrites one byte of an existing file in place (the size stays).
void changeByteAt(const std::string& path, int64_t offset);
// Sets the modification time of `path` to `seconds` after the epoch (nanoseconds 0).
void setModifiedTime(const std::string& path, int64_t seconds);

// Writes `contents` to files named `names` in a folder 80 levels below `top`, about 4,900
// bytes of path (more than PATH_MAX), and returns that folder's path.
std::string writeDeeperThanPathMax(const std::string& top, const std::string& contents,
                                   const std::vector<std::string>& names);

// Each group's paths in the order the search returned them.
std::vector<std::vector<std::string>> groupPaths(const DuplicateScanResult& result);

// Records every progress report of a search; thread-safe.
class ProgressRecorder {
public:
    using Report = std::tuple<DuplicateScanPhase, int64_t, int64_t>;
    DuplicateScanProgress callback();
    std::vector<Report> reports() const;
    bool saw(DuplicateScanPhase phase) const;

private:
    mutable std::mutex lock_;
    std::vector<Report> reports_;
};

// A DuplicateFile record for selection tests that need no real file.
DuplicateFile fileRecord(const std::string& path, int64_t bytes = 1'000'000,
                         int64_t createdSeconds = 0);
DuplicateGroup groupOf(std::vector<DuplicateFile> files);

}  // namespace veldan::test
