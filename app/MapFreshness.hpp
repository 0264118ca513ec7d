#pragma once
// Whether changed paths touch the map of a folder: a path affects it when, with links
// resolved, it is the map's root or lies inside it ("/" contains everything). A path
// that no longer exists (it was just moved away) is resolved through its nearest
// existing parent folder.
//
// Contract: reads the file system on the caller's thread; thread-safe.

#include <string>
#include <vector>

namespace veldan {

class MapFreshness {
public:
    static bool affectsMap(const std::string& root, const std::vector<std::string>& affectedPaths);
    // `path` standardized, with links resolved as far as it exists.
    static std::string normalized(const std::string& path);
};

}  // namespace veldan
