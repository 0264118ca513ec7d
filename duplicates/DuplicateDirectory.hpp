#pragma once
// A folder waiting to be listed by the duplicate search.

#include <memory>
#include <string>

#include "duplicates/DuplicateCollectResult.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan {

// An open folder shared by the subfolders its listing found; closed when the last of them
// has been opened.
using DuplicateSharedFolder = std::shared_ptr<const platform::UniqueFd>;

struct DuplicateDirectory {
    std::string path;
    // What the listing of its parent saw at `path` (for the root, what the search looked
    // at when it started); the folder opened later must be this one, so nothing swapped in
    // since can lead the walk elsewhere.
    DuplicateIdentity identity;
    // The parent folder, when the walk could keep it open: the folder is then opened by its
    // name relative to it, which works at any depth and whatever happened above it.
    // Otherwise it is reached by its path.
    DuplicateSharedFolder parent;
};

}  // namespace veldan
