#include "app/MapPictureStyle.hpp"

#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

std::optional<OpaqueFolderPolicy::Kind> MapPictureStyle::opaqueKind(const DiskNode& node) {
    // Only a folder the scan kept without children can have been measured as one block.
    if (!node.isDirectory || node.isSummary || !node.children.empty()) return std::nullopt;
    return OpaqueFolderPolicy::kind(platform::standardizePath(node.path),
                                    platform::standardizePath(platform::homeFolder()));
}

std::string MapPictureStyle::emptyTextFor(const DiskNode& folder) {
    if (folder.bytes <= 0 || !folder.children.empty()) return std::string(emptyFolderText);
    if (auto kind = opaqueKind(folder)) return std::string(OpaqueFolderPolicy::explanation(*kind));
    return std::string(wholeFolderText);
}

}  // namespace veldan
