// `veldan-app`: the desktop app. One instance per user: a second launch, with or without
// "--scan PATH" (or a folder given by the desktop), brings the running window forward.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>

#include "activity/WidgetDigest.hpp"
#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "gui/AppArguments.hpp"
#include "gui/MainWindow.hpp"
#include "gui/SingleInstance.hpp"

int main(int argc, char** argv) {
    using namespace veldan;
    QApplication application(argc, argv);
    Q_INIT_RESOURCE(resources);
    QApplication::setApplicationName(QStringLiteral("Veldan"));
    QApplication::setApplicationVersion(QStringLiteral(VELDAN_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.veldan.Veldan"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/com.veldan.Veldan.svg")));

    const auto arguments = gui::AppArguments::parse(argc, argv);
    if (gui::SingleInstance::forwardToRunning(arguments.forwardedScanPath())) return 0;
    gui::SingleInstance instance;
    instance.listen();

    DiskMapModelOptions options = DiskMapModelOptions::fromApplication();
    options.arguments = arguments.modelArguments;
    DiskMapModel model(std::move(options));
    ToolNavigation tools;
    if (arguments.tool) tools.open(*arguments.tool);
    gui::MainWindow window(model, tools);
    QObject::connect(&instance, &gui::SingleInstance::requested, &window,
                     [&window](const std::optional<std::string>& path) {
                         window.bringForward();
                         if (path) window.scanFolder(*path);
                     });
    window.show();
    const int status = QApplication::exec();
    // A tray icon or status bar must never show a scan in progress after Veldan has quit.
    WidgetDigest::markInterruptedScanStopped();
    WidgetDigest::drain();
    return status;
}
