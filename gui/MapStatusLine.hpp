#pragma once
// The line under the toolbar that always says what the map is: its folder and volume
// (free of total), whether it is an earlier map and from when, whether files changed
// since, and while a scan runs its counts, current folder and, on a rescan, how far along
// it is against the earlier map.
//
// Contract: a widget of the main thread; it only reads the model.

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace veldan {
class DiskMapModel;
}

namespace veldan::gui {

class MapStatusLine final : public QWidget {
    Q_OBJECT

public:
    explicit MapStatusLine(DiskMapModel& model, QWidget* parent = nullptr);

    QString scopeText() const;
    QString stateText() const;
    // The percentage of the running scan against the earlier map; -1 when unknown.
    int progressPercent() const;

public Q_SLOTS:
    void refresh();

Q_SIGNALS:
    void stopRequested();
    void rescanRequested();

private:
    DiskMapModel& model_;
    QLabel* scope_;
    QLabel* state_;
    QProgressBar* progress_;
    QPushButton* action_;
};

}  // namespace veldan::gui
