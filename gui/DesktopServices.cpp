#include "gui/DesktopServices.hpp"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>
#include <QUrl>

#include "platform/Paths.hpp"
#include "platform/TrashInfo.hpp"

namespace veldan::gui {

namespace {

constexpr auto fileManagerService = "org.freedesktop.FileManager1";

bool fileManagerAvailable(const QDBusConnection& bus) {
    if (!bus.isConnected() || bus.interface() == nullptr) return false;
    const QString service = QString::fromLatin1(fileManagerService);
    if (bus.interface()->isServiceRegistered(service)) return true;
    // A file manager started on demand by the bus counts as well.
    const QDBusReply<QStringList> activatable = bus.interface()->activatableServiceNames();
    return activatable.isValid() && activatable.value().contains(service);
}

}  // namespace

QString DesktopServices::fileUri(const std::string& path) {
    return QStringLiteral("file://") + QString::fromLatin1(platform::percentEncodePath(path));
}

std::optional<QString> DesktopServices::xdgOpen(const QString& uri) {
    if (QProcess::startDetached(QStringLiteral("xdg-open"), {uri})) return std::nullopt;
    return QStringLiteral("Could not start xdg-open to open this item.");
}

void DesktopServices::showInFileManager(const std::string& path, QDBusConnection bus) {
    const QString parentUri = fileUri(platform::parentPath(path));
    if (!fileManagerAvailable(bus)) {
        xdgOpen(parentUri);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QString::fromLatin1(fileManagerService), QStringLiteral("/org/freedesktop/FileManager1"),
        QString::fromLatin1(fileManagerService), QStringLiteral("ShowItems"));
    call << QStringList{fileUri(path)} << QString();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), qApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, qApp,
                     [parentUri](QDBusPendingCallWatcher* finished) {
                         // A file manager that is registered but fails still leaves the
                         // user with the folder open.
                         if (finished->isError()) xdgOpen(parentUri);
                         finished->deleteLater();
                     });
}

std::optional<QString> DesktopServices::open(const std::string& path) {
    return xdgOpen(fileUri(path));
}

void DesktopServices::copyPath(const std::string& path) {
    auto* data = new QMimeData;
    data->setText(QFile::decodeName(QByteArray::fromStdString(path)));
    // The URI keeps the exact bytes for applications that read it.
    data->setData(QStringLiteral("text/uri-list"),
                  (fileUri(path) + QStringLiteral("\r\n")).toLatin1());
    QGuiApplication::clipboard()->setMimeData(data);
}

}  // namespace veldan::gui
