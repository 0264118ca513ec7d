#include "gui/TrayStatus.hpp"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include "activity/WidgetDigest.hpp"
#include "activity/WidgetDigestText.hpp"
#include "app/DiskMapModel.hpp"
#include "app/SvgText.hpp"
#include "gui/TrayIcon.hpp"

namespace veldan::gui {

TrayStatus::TrayStatus(DiskMapModel& model, TrayIcon& tray, QObject* parent)
    : QObject(parent), model_(model), tray_(tray) {
    // The model writes the digest on its own queue; a moment later it is on disk.
    soon_.setSingleShot(true);
    soon_.setInterval(500);
    connect(&soon_, &QTimer::timeout, this, &TrayStatus::reload);
    everyMinute_.setInterval(60'000);
    connect(&everyMinute_, &QTimer::timeout, this, &TrayStatus::reload);
    everyMinute_.start();
    for (auto signal : {&DiskMapModel::isScanningChanged, &DiskMapModel::snapshotChanged,
                        &DiskMapModel::mapNeedsRefreshChanged, &DiskMapModel::wasScanStoppedChanged,
                        &DiskMapModel::recommendationsChanged, &DiskMapModel::cleanupChanged}) {
        connect(&model_, signal, &soon_, qOverload<>(&QTimer::start));
    }
    reload();
}

void TrayStatus::reload() {
    const uint64_t generation = ++generation_;
    QPointer<TrayStatus> self(this);
    QThreadPool::globalInstance()->start([self, generation] {
        const auto digest = WidgetDigest::load();
        const auto now = WidgetDigest::Clock::now();
        const QString text =
            digest
                ? QString::fromStdString(WidgetDigestText::helpText(digest, now, &SvgText::clean))
                : QStringLiteral("No map yet");
        const bool scanning = digest && digest->shownScanState(now) == WidgetScanState::scanning;
        QMetaObject::invokeMethod(
            qApp,
            [self, generation, text, scanning] {
                // Only the latest reading counts; the window may be gone.
                if (!self || generation != self->generation_) return;
                self->tray_.setStatus(text, scanning);
                Q_EMIT self->shown(text);
            },
            Qt::QueuedConnection);
    });
}

}  // namespace veldan::gui
