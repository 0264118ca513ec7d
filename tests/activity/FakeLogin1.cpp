// A stand-in for logind's Inhibit on a private bus (tests cannot run logind): it owns
// org.freedesktop.login1 on the bus named by DBUS_SYSTEM_BUS_ADDRESS, answers Inhibit with
// the write end of a pipe as logind does, and prints one line per call and one when a
// caller closes its descriptor. With FAKE_LOGIN1_DENY_SLEEP set it refuses "sleep" the
// way polkit refuses an unprivileged block of sleep.

#include <unistd.h>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>

class Manager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode) {
        std::printf("inhibit %s|%s|%s|%s\n", qPrintable(what), qPrintable(who), qPrintable(why),
                    qPrintable(mode));
        std::fflush(stdout);
        if (std::getenv("FAKE_LOGIN1_DENY_SLEEP") && what.contains(QStringLiteral("sleep"))) {
            sendErrorReply(QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"),
                           QStringLiteral("Permission denied"));
            return {};
        }
        int ends[2];
        if (::pipe(ends) != 0) return {};
        auto* notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [notifier, fd = ends[0]] {
            std::printf("released\n");
            std::fflush(stdout);
            notifier->setEnabled(false);
            ::close(fd);
        });
        QDBusUnixFileDescriptor reply(ends[1]);  // duplicates it
        ::close(ends[1]);
        return reply;
    }
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QDBusConnection bus = QDBusConnection::systemBus();
    Manager manager;
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/login1"), &manager,
                            QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QStringLiteral("org.freedesktop.login1"))) {
        std::fprintf(stderr, "could not serve on the bus\n");
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return app.exec();
}

#include "FakeLogin1.moc"
