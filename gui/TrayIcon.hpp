#pragma once
// Veldan in the system tray: the icon with the digest's one-line state (free space, what
// is safe to clean, scanning or outdated) as its tooltip, and a menu to open the window,
// start the two common scans, open a tool and quit. A click on the icon opens the window.
//
// Contract: a QObject of the main thread; the actions belong to the window and are shared.

#include <QObject>
#include <QSystemTrayIcon>

class QAction;
class QMenu;

namespace veldan::gui {

class WindowActions;

class TrayIcon final : public QObject {
    Q_OBJECT

public:
    TrayIcon(WindowActions& actions, QObject* parent = nullptr);
    ~TrayIcon() override;

    // The desktop shows tray icons at all.
    static bool isAvailable();

    void setVisible(bool visible);
    bool isVisible() const;
    void setStatus(const QString& line, bool busy);
    QString status() const;
    QMenu* menu() const { return menu_; }

Q_SIGNALS:
    void openRequested();

private:
    QMenu* menu_;
    QSystemTrayIcon* icon_;
};

}  // namespace veldan::gui
