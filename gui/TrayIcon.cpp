#include "gui/TrayIcon.hpp"

#include <QApplication>
#include <QMenu>

#include "gui/WindowActions.hpp"

namespace veldan::gui {

TrayIcon::TrayIcon(WindowActions& actions, QObject* parent)
    : QObject(parent), menu_(new QMenu), icon_(new QSystemTrayIcon(this)) {
    menu_->addAction(actions.openWindow);
    menu_->addSeparator();
    menu_->addAction(actions.scanStartupDisk);
    menu_->addAction(actions.scanHome);
    menu_->addSeparator();
    for (QAction* tool : actions.tools)
        menu_->addAction(tool);
    menu_->addSeparator();
    menu_->addAction(actions.quit);
    icon_->setContextMenu(menu_);
    icon_->setIcon(QApplication::windowIcon());
    icon_->setToolTip(QStringLiteral("Veldan"));
    connect(icon_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) {
                    Q_EMIT openRequested();
                }
            });
}

TrayIcon::~TrayIcon() {
    delete menu_;
}

bool TrayIcon::isAvailable() {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIcon::setVisible(bool visible) {
    icon_->setVisible(visible);
}

bool TrayIcon::isVisible() const {
    return icon_->isVisible();
}

void TrayIcon::setStatus(const QString& line, bool busy) {
    icon_->setToolTip(line.isEmpty() ? QStringLiteral("Veldan")
                                     : QStringLiteral("Veldan\n") + line);
    // The icon itself says that Veldan is at work, for trays that show no tooltips.
    icon_->setIcon(
        busy ? QIcon::fromTheme(QStringLiteral("view-refresh"), QApplication::windowIcon())
             : QApplication::windowIcon());
}

QString TrayIcon::status() const {
    return icon_->toolTip();
}

}  // namespace veldan::gui
