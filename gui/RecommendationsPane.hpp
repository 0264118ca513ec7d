#pragma once
// The recommendations of the shown map beside it: "Safe to remove" and "Review first",
// each item with its size, what it is, and its folders on hover. Cleaning them belongs
// to the cleanup screen; here they explain where space could come back.

#include <QTreeWidget>

namespace veldan {
class DiskMapModel;
}

namespace veldan::gui {

class RecommendationsPane final : public QTreeWidget {
    Q_OBJECT

public:
    explicit RecommendationsPane(DiskMapModel& model, QWidget* parent = nullptr);

public Q_SLOTS:
    void refresh();

private:
    DiskMapModel& model_;
};

}  // namespace veldan::gui
