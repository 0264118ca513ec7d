// The desktop app measured as a person meets it, one mode per run (run.sh drives them):
//
//   veldan_app_bench launch FOLDER   a fresh process: from its start to the saved map of
//                                    FOLDER painted in the window
//   veldan_app_bench scan FOLDER     a scan of FOLDER with the window open and its live map
//                                    updating, from the start to the finished map
//
// Each prints "seconds=S peakMB=M". Run with HOME and XDG_* pointing at a scratch folder:
// it writes preferences and saved maps there.

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>

#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "cache/ScanCache.hpp"
#include "gui/MainWindow.hpp"
#include "gui/MapPane.hpp"
#include "platform/Preferences.hpp"

namespace {

// Seconds since this process started, from the kernel's own record of its start.
double secondsSinceStart() {
    std::ifstream statFile("/proc/self/stat");
    std::string text((std::istreambuf_iterator<char>(statFile)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long long startTicks = 0;
    for (int index = 3; index <= 22 && fields >> field; ++index) {
        if (index == 22) startTicks = std::stoull(field);
    }
    double uptime = 0;
    std::ifstream("/proc/uptime") >> uptime;
    return uptime - static_cast<double>(startTicks) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double peakMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1000.0;
    }
    return 0;
}

// Reports once the shown map view has painted a map.
class FirstMapPaint : public QObject {
public:
    FirstMapPaint(veldan::gui::MainWindow& window, std::function<void()> done)
        : window_(window), done_(std::move(done)) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched == window_.mapPane()->currentView() &&
            window_.mapPane()->navigation().content().folder() != nullptr && done_) {
            // After this paint has reached the window.
            QTimer::singleShot(0, this, [this] {
                if (auto done = std::exchange(done_, nullptr)) done();
            });
        }
        return false;
    }

private:
    veldan::gui::MainWindow& window_;
    std::function<void()> done_;
};

}  // namespace

int main(int argc, char** argv) {
    using namespace veldan;
    if (argc != 3) {
        std::cerr << "usage: veldan_app_bench launch|scan FOLDER\n";
        return 2;
    }
    const std::string mode = argv[1];
    const std::string folder = argv[2];
    platform::Preferences::setBoolean(DiskMapModel::didCompleteOnboardingKey, true);
    platform::Preferences::setString(DiskMapModel::lastScanPathKey, folder);

    QApplication application(argc, argv);
    DiskMapModelOptions options;
    options.arguments = {"veldan-app"};
    if (mode == "scan") options.arguments.insert(options.arguments.end(), {"--scan", folder});
    QElapsedTimer timer;
    timer.start();
    DiskMapModel model(std::move(options));
    ToolNavigation tools;
    gui::MainWindow window(model, tools);
    double seconds = 0;

    FirstMapPaint firstPaint(window, [&] {
        if (mode == "launch") {
            seconds = secondsSinceStart();
            QApplication::quit();
        }
    });
    QApplication::instance()->installEventFilter(&firstPaint);
    QObject::connect(&model, &DiskMapModel::snapshotChanged, &window, [&] {
        if (mode == "scan" && model.snapshot() && !model.isScanning()) {
            seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
            QApplication::quit();
        }
    });
    window.show();
    QApplication::exec();
    ScanCache::shared().drain();
    std::printf("seconds=%.3f peakMB=%.1f\n", seconds, peakMegabytes());
    return seconds > 0 ? 0 : 1;
}
