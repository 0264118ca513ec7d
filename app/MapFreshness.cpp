#include "app/MapFreshness.hpp"

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

std::string MapFreshness::normalized(const std::string& path) {
    const std::string standard = platform::standardizePath(path);
    if (standard == "/" || standard.empty() || platform::statPath(standard, false)) {
        return platform::standardizePath(platform::resolveSymlinks(standard));
    }
    return platform::joinPath(normalized(platform::parentPath(standard)),
                              platform::lastPathComponent(standard));
}

bool MapFreshness::affectsMap(const std::string& root,
                              const std::vector<std::string>& affectedPaths) {
    const std::string normalRoot = normalized(root);
    for (const auto& path : affectedPaths) {
        if (platform::isSameOrUnder(normalized(path), normalRoot)) return true;
    }
    return false;
}

}  // namespace veldan
