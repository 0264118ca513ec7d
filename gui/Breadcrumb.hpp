#pragma once
// The path from the map's root to the shown folder, one button per folder; a click goes
// back to that folder.

#include <QWidget>
#include <vector>

#include "gui/MapNavigation.hpp"

class QHBoxLayout;

namespace veldan::gui {

class Breadcrumb final : public QWidget {
    Q_OBJECT

public:
    explicit Breadcrumb(QWidget* parent = nullptr);

    void setCrumbs(const std::vector<MapNavigation::Crumb>& crumbs);

Q_SIGNALS:
    void crumbClicked(size_t depth);

private:
    QHBoxLayout* layout_;
};

}  // namespace veldan::gui
