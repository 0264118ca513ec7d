#pragma once
// Keeps the tray icon's words in step with the widget digest: the digest is read off the
// main thread whenever the model's scan or map state changes (once its queued write has
// had a moment to land) and every minute, and its help text becomes the icon's tooltip.
//
// Contract: a QObject of the main thread; the model and the tray outlive it.

#include <QObject>
#include <QTimer>

namespace veldan {
class DiskMapModel;
}

namespace veldan::gui {

class TrayIcon;

class TrayStatus final : public QObject {
    Q_OBJECT

public:
    TrayStatus(DiskMapModel& model, TrayIcon& tray, QObject* parent = nullptr);

    // Reads the digest again (off the main thread) and shows it.
    void reload();

Q_SIGNALS:
    void shown(const QString& text);

private:
    DiskMapModel& model_;
    TrayIcon& tray_;
    QTimer soon_;
    QTimer everyMinute_;
    uint64_t generation_ = 0;
};

}  // namespace veldan::gui
