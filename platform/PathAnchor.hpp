#pragma once
// Reaching an absolute path of any length. The kernel refuses a path of PATH_MAX bytes or
// more in one call (ENAMETOOLONG), yet folders can nest deeper than that; such a path is
// resolved in pieces, each opened relative to the folder the previous one reached.
//
// Contract: `of` opens at most one folder per PATH_MAX bytes of path, on the caller's
// thread, and none for a path that fits in one call. Links on the way are followed as a
// single call would follow them; what is finally opened or looked at relative to the
// anchor is the caller's to check (O_NOFOLLOW, AT_SYMLINK_NOFOLLOW, its identity).

#include <optional>
#include <string>

#include "platform/UniqueFd.hpp"

namespace veldan::platform {

class PathAnchor {
public:
    // Where `absolutePath` can be reached from: nothing (with `error`) when a folder on
    // the way cannot be opened.
    static std::optional<PathAnchor> of(const std::string& absolutePath, int& error);

    // The folder to start from (AT_FDCWD when the whole path fits in one call) and the
    // rest of the path, which does.
    int folder() const;
    const char* rest() const { return rest_.c_str(); }

private:
    UniqueFd folder_;
    std::string rest_;
};

}  // namespace veldan::platform
