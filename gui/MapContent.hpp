#pragma once
// What a map view shows: one folder of a measured tree, whether the scan that made the
// tree has finished, and, on a map of the startup disk, the volume's free space as an
// item of its own after the folder's children, so that a full disk and a half-empty one
// look different.
//
// Contract: a cheap value to copy; it keeps the tree alive, and the node pointers it hands
// out stay valid while any copy of it lives.

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "app/MapPictureStyle.hpp"
#include "scan/DiskNode.hpp"

namespace veldan::gui {

class MapContent {
public:
    static constexpr std::string_view freeSpaceName = "Free space";

    MapContent() = default;
    // `folder` lies inside `tree`.
    MapContent(std::shared_ptr<const DiskNode> tree, const DiskNode* folder, bool scanFinished,
               std::optional<int64_t> freeSpace = std::nullopt);

    bool isEmpty() const { return folder_ == nullptr; }
    const DiskNode* folder() const { return folder_; }
    const std::shared_ptr<const DiskNode>& tree() const { return tree_; }
    bool scanFinished() const { return scanFinished_; }
    // The folder's children, then the free-space item when it is shown.
    const std::vector<const DiskNode*>& items() const { return items_; }
    const DiskNode* freeSpaceNode() const { return freeSpace_.get(); }
    bool isFreeSpace(const DiskNode* node) const { return node && node == freeSpace_.get(); }
    // What the items' shares are of: the folder, plus the free space when shown.
    int64_t total() const;

    MapPictureStyle style(bool dark) const;

private:
    std::shared_ptr<const DiskNode> tree_;
    const DiskNode* folder_ = nullptr;
    bool scanFinished_ = true;
    std::shared_ptr<const DiskNode> freeSpace_;
    std::vector<const DiskNode*> items_;
};

}  // namespace veldan::gui
