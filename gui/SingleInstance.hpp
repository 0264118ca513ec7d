#pragma once
// One Veldan per user: the first instance listens on a local socket in the runtime
// folder; a later launch hands its request (open the window, or scan a folder) to it and
// exits. Folder paths travel as raw bytes, made absolute by the launch that named them.
//
// Contract: a QObject of the main thread. The socket is private to the user (the runtime
// folder is, and the socket is made 0600).

#include <QLocalServer>
#include <QObject>
#include <optional>
#include <string>

namespace veldan::gui {

class SingleInstance final : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(QObject* parent = nullptr);

    // $XDG_RUNTIME_DIR/veldan-app.socket, else one per user in the temporary folder.
    static QString socketPath();

    // Hands `scanPath` (or a plain "open the window") to a running instance; true when
    // one took it, and this process should exit.
    static bool forwardToRunning(const std::optional<std::string>& scanPath);
    // Starts listening; false when another instance already does.
    bool listen();

Q_SIGNALS:
    // A later launch asked for the window, and a scan of `scanPath` when it has one.
    void requested(const std::optional<std::string>& scanPath);

private:
    void handle(const QByteArray& request);

    QLocalServer server_;
};

}  // namespace veldan::gui
