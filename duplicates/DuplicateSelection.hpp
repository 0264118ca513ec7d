#pragma once
// Which copies of a verified duplicate group may be moved to Trash, and which copy
// "Smart select" keeps. At least one copy of every group always stays; copies in system
// locations, in the user's Library, inside packages, or hidden stay in Finder and are
// never selected.
//
// Contract: pure functions of their arguments and the home folder; callable from any
// thread. Paths are compared after lexical standardisation.

#include <optional>
#include <set>
#include <string>

#include "duplicates/DuplicateGroup.hpp"

namespace veldan {

using DuplicatePathSet = std::set<std::string>;

class DuplicateSelection {
public:
    // Why `file` must stay where it is, as one sentence, or nothing when it may be
    // selected. `scope` is the scanned folder; for a scan of "/" only copies inside the
    // home folder may move.
    static std::optional<std::string> finderOnlyReason(const DuplicateFile& file,
                                                       const std::string& scope);

    // How strongly a copy should be kept: 1000 for a copy that must stay, otherwise
    // around 100 (more in the home folder's media folders and on the Desktop, less in
    // Downloads, for names saying "copy", and for deeper paths).
    static int keepScore(const DuplicateFile& file, const std::string& scope);

    // The paths of every other eligible file of `group`, keeping `keeper`; nothing when
    // `keeper` is not one of the group's files.
    static DuplicatePathSet selectExtras(const DuplicateGroup& group, const DuplicateFile& keeper,
                                         const std::string& scope);

    // Keeps the best copy (highest keep score, then the oldest by creation second, then
    // the first in Finder order) and selects the other eligible ones.
    static DuplicatePathSet smartSelect(const DuplicateGroup& group, const std::string& scope);
};

}  // namespace veldan
