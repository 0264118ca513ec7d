#include "gui/MapContent.hpp"

#include "scan/SaturatingAdd.hpp"

namespace veldan::gui {

MapContent::MapContent(std::shared_ptr<const DiskNode> tree, const DiskNode* folder,
                       bool scanFinished, std::optional<int64_t> freeSpace)
    : tree_(std::move(tree)), folder_(folder), scanFinished_(scanFinished) {
    if (folder_ == nullptr) return;
    items_.reserve(folder_->children.size() + 1);
    for (const auto& child : folder_->children)
        items_.push_back(&child);
    if (freeSpace && *freeSpace > 0) {
        auto node = std::make_shared<DiskNode>();
        node->name = std::string(freeSpaceName);
        // No file has this path: a free-space item never matches a real one.
        node->path = folder_->path + "/#free-space";
        node->bytes = *freeSpace;
        freeSpace_ = std::move(node);
        items_.push_back(freeSpace_.get());
    }
}

int64_t MapContent::total() const {
    if (folder_ == nullptr) return 0;
    return freeSpace_ ? saturatingAdd(folder_->bytes, freeSpace_->bytes) : folder_->bytes;
}

MapPictureStyle MapContent::style(bool dark) const {
    MapPictureStyle style;
    style.dark = dark;
    style.scanFinished = scanFinished_;
    style.freeSpace = freeSpace_.get();
    if (folder_ != nullptr) style.emptyText = MapPictureStyle::emptyTextFor(*folder_);
    return style;
}

}  // namespace veldan::gui
