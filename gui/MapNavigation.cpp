#include "gui/MapNavigation.hpp"

#include "app/SvgText.hpp"
#include "platform/Paths.hpp"

namespace veldan::gui {

MapNavigation::MapNavigation(QObject* parent) : QObject(parent) {}

bool MapNavigation::canEnter(const DiskNode& node) {
    return node.isDirectory && !node.isSummary && node.bytes > 0;
}

void MapNavigation::setTree(std::shared_ptr<const DiskNode> tree, bool scanFinished) {
    if (!tree || !tree_ || tree->path != tree_->path) zoomPath_.clear();
    tree_ = std::move(tree);
    scanFinished_ = scanFinished;
    resolve();
}

void MapNavigation::setExplored(const std::string& path, std::shared_ptr<const DiskNode> folder) {
    exploredPath_ = path;
    explored_ = std::move(folder);
    resolve();
}

void MapNavigation::clearExplored() {
    if (!explored_ && exploredPath_.empty()) return;
    exploredPath_.clear();
    explored_.reset();
    resolve();
}

void MapNavigation::setFreeSpace(std::optional<int64_t> bytes) {
    if (freeSpace_ == bytes) return;
    freeSpace_ = bytes;
    resolve();
}

bool MapNavigation::zoomInto(const std::string& path) {
    const DiskNode* folder = content_.folder();
    if (folder == nullptr) return false;
    // The folders between the shown one and `path` join the zoom path too, so a nested
    // tile is entered in one click and left one level at a time.
    std::vector<std::string> steps;
    while (folder->path != path) {
        const DiskNode* next = nullptr;
        for (const auto& child : folder->children) {
            if (canEnter(child) && platform::isSameOrUnder(path, child.path)) next = &child;
        }
        if (next == nullptr) return false;
        steps.push_back(next->path);
        folder = next;
    }
    if (steps.empty()) return false;
    // Only the folders present up to the shown one stay on the path.
    zoomPath_.resize(crumbs_.size() - 1);
    zoomPath_.insert(zoomPath_.end(), steps.begin(), steps.end());
    resolve();
    return true;
}

void MapNavigation::zoomOutTo(size_t depth) {
    if (depth + 1 >= crumbs_.size()) return;
    zoomPath_.resize(depth);
    resolve();
}

void MapNavigation::resolve() {
    crumbs_.clear();
    if (!tree_) {
        content_ = {};
        Q_EMIT changed();
        return;
    }
    // The explored folder replaces its node, and keeps its own tree alive while shown.
    std::shared_ptr<const DiskNode> owner = tree_;
    const auto substitute = [&](const DiskNode* node) {
        if (explored_ && node->path == exploredPath_) {
            owner = explored_;
            return explored_.get();
        }
        return node;
    };
    const DiskNode* folder = substitute(tree_.get());
    const auto crumb = [&](const DiskNode& node) {
        crumbs_.push_back({SvgText::clean(node.name.empty() ? node.path : node.name), node.path});
    };
    crumb(*folder);
    for (const auto& path : zoomPath_) {
        const DiskNode* next = nullptr;
        for (const auto& child : folder->children) {
            if (child.path == path && canEnter(child)) next = &child;
        }
        if (next == nullptr) break;
        folder = substitute(next);
        crumb(*folder);
    }
    const bool atRoot = crumbs_.size() == 1;
    content_ = MapContent(owner, folder, scanFinished_,
                          atRoot && tree_->path == "/" ? freeSpace_ : std::nullopt);
    Q_EMIT changed();
}

}  // namespace veldan::gui
