#pragma once
// What the map's context menu asks of the desktop: show an item in the file manager
// (org.freedesktop.FileManager1.ShowItems over D-Bus, else xdg-open on its folder), open it
// with its default application (xdg-open), and copy its path.
//
// Paths are raw bytes; they travel as percent-encoded file URIs, so a name that is not
// UTF-8 reaches the file manager byte for byte.
//
// Contract: main thread; nothing blocks (the D-Bus call and the helper processes run
// detached). Failures to start are reported through the returned sentence.

#include <QDBusConnection>
#include <QString>
#include <optional>
#include <string>

namespace veldan::gui {

class DesktopServices {
public:
    static QString fileUri(const std::string& path);

    static void showInFileManager(const std::string& path,
                                  QDBusConnection bus = QDBusConnection::sessionBus());
    // Nothing, or one sentence saying why the item could not be opened.
    static std::optional<QString> open(const std::string& path);
    static void copyPath(const std::string& path);

private:
    static std::optional<QString> xdgOpen(const QString& uri);
};

}  // namespace veldan::gui
