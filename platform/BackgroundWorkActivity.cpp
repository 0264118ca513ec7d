#include "platform/BackgroundWorkActivity.hpp"

#include <fcntl.h>
#include <unistd.h>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QString>
#include <QThread>
#include <QVariant>

#include "platform/Uuid.hpp"

namespace veldan::platform {

namespace {

// logind answers at once; a bus that does not is broken, and the work goes ahead
// without an inhibitor rather than waiting on it.
constexpr int callTimeoutMilliseconds = 3000;

// The descriptor logind hands out, or an invalid one when the call failed.
UniqueFd inhibit(QDBusConnection& bus, const char* what) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call << QString::fromLatin1(what) << QStringLiteral("Veldan")
         << QString::fromUtf8(BackgroundWorkActivity::reason) << QStringLiteral("block");
    const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    const auto descriptor = reply.arguments().front().value<QDBusUnixFileDescriptor>();
    if (!descriptor.isValid()) return {};
    // The reply's copy closes with the message; ours must live until the work ends.
    return UniqueFd(::fcntl(descriptor.fileDescriptor(), F_DUPFD_CLOEXEC, 0));
}

UniqueFd takeInhibitor() {
    // A private connection per request: nothing of it outlives the call, and no other
    // part of the process shares (or can close) it. The inhibitor is the descriptor, not
    // the connection, so closing the connection keeps it.
    const QString name = QStringLiteral("veldan-inhibit-") + QString::fromStdString(randomUuid());
    UniqueFd fd;
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
        if (bus.isConnected()) {
            fd = inhibit(bus, "idle:sleep");
            // Blocking sleep may need an authorisation that idling does not.
            if (!fd) fd = inhibit(bus, "idle");
        }
    }
    QDBusConnection::disconnectFromBus(name);
    return fd;
}

}  // namespace

BackgroundWorkActivity::BackgroundWorkActivity() {
    // Without an application object, Qt takes the first thread that uses it for the main
    // thread. That must be this one (the process's main thread), not the queue's: the state
    // Qt keeps for the real main thread is otherwise never torn down at exit.
    QThread::currentThread();
}

BackgroundWorkActivity::~BackgroundWorkActivity() {
    update(false);
    queue_.drain();
}

void BackgroundWorkActivity::update(bool busy) {
    queue_.async([this, busy] { apply(busy); });
}

void BackgroundWorkActivity::drain() {
    queue_.drain();
}

void BackgroundWorkActivity::apply(bool busy) {
    if (busy == wanted_) return;
    wanted_ = busy;
    if (busy) {
        inhibitor_ = takeInhibitor();
    } else {
        inhibitor_.reset();
    }
    held_.store(inhibitor_.valid());
}

}  // namespace veldan::platform
