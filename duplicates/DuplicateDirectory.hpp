#pragma once
// A folder waiting to be listed by the duplicate search.

#include <optional>
#include <string>

#include "duplicates/DuplicateCollectResult.hpp"

namespace veldan {

struct DuplicateDirectory {
    std::string path;
    // What the listing of its parent saw at `path`; the folder opened later must be this
    // one, so a link swapped in above it cannot lead the walk elsewhere. Empty for the
    // search's root, which is looked up by its path.
    std::optional<DuplicateIdentity> identity;
};

}  // namespace veldan
