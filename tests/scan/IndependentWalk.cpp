#include "tests/scan/IndependentWalk.hpp"

#include <dirent.h>
#include <sys/stat.h>

#include <set>
#include <utility>

namespace veldan::test {

namespace {

void walk(const std::string& path, dev_t device, std::set<std::pair<dev_t, ino_t>>& links,
          IndependentTotals& totals) {
    DIR* dir = ::opendir(path.c_str());
    if (!dir) return;
    ++totals.folders;
    while (auto* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        const std::string child = path + "/" + name;
        struct stat status {};
        if (::lstat(child.c_str(), &status) != 0 || status.st_dev != device) continue;
        if (S_ISDIR(status.st_mode)) {
            walk(child, device, links, totals);
            continue;
        }
        ++totals.files;
        if (status.st_nlink > 1 && !links.insert({status.st_dev, status.st_ino}).second) {
            continue;
        }
        totals.bytes += static_cast<int64_t>(status.st_blocks) * 512;
    }
    ::closedir(dir);
}

}  // namespace

IndependentTotals independentWalk(const std::string& root) {
    struct stat status {};
    IndependentTotals totals;
    if (::stat(root.c_str(), &status) != 0) return totals;
    std::set<std::pair<dev_t, ino_t>> links;
    walk(root, status.st_dev, links, totals);
    return totals;
}

}  // namespace veldan::test
