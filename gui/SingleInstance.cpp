#include "gui/SingleInstance.hpp"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <memory>

namespace veldan::gui {

namespace {

constexpr int timeoutMs = 2000;
constexpr char openRequest = 'O';
constexpr char scanRequest = 'S';

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            // The request is complete when the sender closes its end.
            auto request = std::make_shared<QByteArray>();
            connect(socket, &QLocalSocket::readyRead, socket,
                    [socket, request] { *request += socket->readAll(); });
            auto finish = [this, socket, request] {
                *request += socket->readAll();
                socket->deleteLater();
                handle(*request);
                request->clear();
            };
            if (socket->state() == QLocalSocket::UnconnectedState) {
                finish();
            } else {
                connect(socket, &QLocalSocket::disconnected, this, finish);
            }
        }
    });
}

void SingleInstance::handle(const QByteArray& request) {
    if (request.isEmpty()) return;
    if (request.front() == scanRequest && request.size() > 1) {
        Q_EMIT requested(request.mid(1).toStdString());
    } else {
        Q_EMIT requested(std::nullopt);
    }
}

QString SingleInstance::socketPath() {
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && runtime.startsWith('/')) {
        return QFile::decodeName(runtime) + QStringLiteral("/veldan-app.socket");
    }
    return QDir::tempPath() + QStringLiteral("/veldan-app-%1.socket").arg(::getuid());
}

bool SingleInstance::forwardToRunning(const std::optional<std::string>& scanPath) {
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(timeoutMs)) return false;
    // One request: a kind byte, then the raw path bytes, then the end of the stream.
    QByteArray request(1, scanPath ? scanRequest : openRequest);
    if (scanPath) request += QByteArray::fromStdString(*scanPath);
    socket.write(request);
    socket.flush();
    socket.disconnectFromServer();
    if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(timeoutMs);
    return true;
}

bool SingleInstance::listen() {
    const QString path = socketPath();
    // Qt replaces an existing socket file when it listens, so a running instance must be
    // asked first; a socket left by one that crashed answers nobody and may go.
    QLocalSocket probe;
    probe.connectToServer(path);
    if (probe.waitForConnected(timeoutMs)) return false;
    QLocalServer::removeServer(path);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    return server_.listen(path);
}

}  // namespace veldan::gui
