#pragma once
// Which folder of the map is shown: the measured tree, the path of folders the user zoomed
// into from its root, a folder measured by itself ("Explore") that stands in for its node
// of the tree, and the free-space item of a startup-disk map.
//
// The zoom path is kept as paths, not nodes: a live scan replaces the tree every few
// tenths of a second, and the shown folder must stay where the user put it. While a
// folder of the path is missing from the newer tree, the deepest one present is shown.
//
// Contract: a QObject of the main thread; changed() follows every change of content().

#include <QObject>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gui/MapContent.hpp"
#include "scan/DiskNode.hpp"

namespace veldan::gui {

class MapNavigation : public QObject {
    Q_OBJECT

public:
    struct Crumb {
        std::string name;
        std::string path;
    };

    explicit MapNavigation(QObject* parent = nullptr);

    // A new tree; the zoom path resets when the root is another folder.
    void setTree(std::shared_ptr<const DiskNode> tree, bool scanFinished);
    // `folder` was measured by itself and is shown wherever the zoom path reaches `path`.
    void setExplored(const std::string& path, std::shared_ptr<const DiskNode> folder);
    void clearExplored();
    // The volume's free space shown beside the root of a startup-disk map; nothing hides it.
    void setFreeSpace(std::optional<int64_t> bytes);

    const MapContent& content() const { return content_; }
    // The whole tree shown (not an explored folder standing in for a node of it).
    const std::shared_ptr<const DiskNode>& tree() const { return tree_; }
    // The root first, the shown folder last; empty without a tree.
    const std::vector<Crumb>& crumbs() const { return crumbs_; }
    bool canZoomOut() const { return crumbs_.size() > 1; }

    // Shows `path`, a folder inside the shown folder (nested ones too). Returns false for
    // anything that cannot be entered: a file, a grouped "Other", the free space.
    bool zoomInto(const std::string& path);
    // Shows the crumb at `depth` (0 the root).
    void zoomOutTo(size_t depth);
    void zoomOut() {
        if (canZoomOut()) zoomOutTo(crumbs_.size() - 2);
    }

    // Whether a node of the shown folder can be entered.
    static bool canEnter(const DiskNode& node);

Q_SIGNALS:
    void changed();

private:
    void resolve();

    std::shared_ptr<const DiskNode> tree_;
    bool scanFinished_ = true;
    std::vector<std::string> zoomPath_;  // below the root
    std::string exploredPath_;
    std::shared_ptr<const DiskNode> explored_;
    std::optional<int64_t> freeSpace_;
    MapContent content_;
    std::vector<Crumb> crumbs_;
};

}  // namespace veldan::gui
