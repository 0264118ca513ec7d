#include "gui/MapStatusLine.hpp"

#include <QDateTime>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>

#include "app/DiskMapModel.hpp"
#include "gui/MapItemText.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/SizeText.hpp"

namespace veldan::gui {

namespace {

QString bytesText(int64_t bytes) {
    return QString::fromStdString(SizeText::string(bytes));
}

QString count(int64_t value) {
    return QLocale().toString(static_cast<qlonglong>(value));
}

QString scopeName(const std::string& path) {
    if (path == "/") return QStringLiteral("Startup disk");
    if (platform::standardizePath(path) == platform::standardizePath(platform::homeFolder())) {
        return QStringLiteral("Home folder");
    }
    return MapItemText::display(platform::lastPathComponent(path));
}

}  // namespace

MapStatusLine::MapStatusLine(DiskMapModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      scope_(new QLabel(this)),
      state_(new QLabel(this)),
      progress_(new QProgressBar(this)),
      action_(new QPushButton(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 10, 4);
    QFont bold = scope_->font();
    bold.setBold(true);
    scope_->setFont(bold);
    state_->setTextFormat(Qt::PlainText);
    state_->setMinimumWidth(100);
    state_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    progress_->setMaximumWidth(160);
    progress_->setTextVisible(true);
    progress_->setAccessibleName(QStringLiteral("Scan progress"));
    layout->addWidget(scope_);
    layout->addWidget(state_, 1);
    layout->addWidget(progress_);
    layout->addWidget(action_);
    connect(action_, &QPushButton::clicked, this, [this] {
        if (model_.isScanning()) {
            Q_EMIT stopRequested();
        } else {
            Q_EMIT rescanRequested();
        }
    });
    for (auto signal :
         {&DiskMapModel::snapshotChanged, &DiskMapModel::isScanningChanged,
          &DiskMapModel::scanProgressChanged, &DiskMapModel::wasScanStoppedChanged,
          &DiskMapModel::mapNeedsRefreshChanged, &DiskMapModel::volumeRefreshIDChanged,
          &DiskMapModel::isRestoringScanChanged, &DiskMapModel::selectedURLChanged,
          &DiskMapModel::explorationChanged, &DiskMapModel::folderRescanChanged,
          &DiskMapModel::scanPreviewChanged}) {
        connect(&model_, signal, this, &MapStatusLine::refresh);
    }
    refresh();
}

QString MapStatusLine::scopeText() const {
    return scope_->text();
}

QString MapStatusLine::stateText() const {
    return state_->text();
}

int MapStatusLine::progressPercent() const {
    const auto& progress = model_.scanProgress();
    if (!model_.isScanning() || !progress.earlierFiles || *progress.earlierFiles <= 0) return -1;
    const int64_t done = progress.folders + progress.files;
    const int64_t earlier = *progress.earlierFiles + progress.earlierFolders.value_or(0);
    // The earlier map is only a guide: the scan is not done before it says so.
    return static_cast<int>(std::min<int64_t>(99, done * 100 / std::max<int64_t>(1, earlier)));
}

void MapStatusLine::refresh() {
    QString scope = scopeName(model_.selectedURL());
    if (const auto& volume = model_.volume(); volume && volume->total > 0) {
        scope += QStringLiteral(" · %1 free of %2")
                     .arg(bytesText(volume->free), bytesText(volume->total));
    }
    scope_->setText(scope);

    QStringList parts;
    QString action;
    const auto& snapshot = model_.snapshot();
    if (model_.isScanning()) {
        const auto& progress = model_.scanProgress();
        parts << QStringLiteral("Scanning… %1 folders, %2 files")
                     .arg(count(progress.folders), count(progress.files));
        if (!progress.currentItem.empty()) parts << MapItemText::display(progress.currentItem);
        action = QStringLiteral("Stop");
    } else if (model_.isRestoringScan()) {
        parts << QStringLiteral("Opening the saved map…");
    } else if (!model_.rescanningFolder().empty()) {
        parts << QStringLiteral("Rescanning ") + MapItemText::display(model_.rescanningFolder()) +
                     QStringLiteral("…");
    } else if (model_.wasScanStopped()) {
        parts << (model_.scanPreview()
                      ? QStringLiteral("Scan stopped: the map shows what was measured so far.")
                      : QStringLiteral("Scan stopped before anything was measured."));
        action = QStringLiteral("Scan Again");
    } else if (snapshot) {
        parts << QStringLiteral("%1 in %2 folders and %3 files")
                     .arg(bytesText(snapshot->root.bytes), count(snapshot->visitedFolderCount),
                          count(snapshot->visitedFileCount));
        if (model_.isShowingCachedScan()) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
                                     snapshot->finishedAt.time_since_epoch())
                                     .count();
            const QDateTime when = QDateTime::fromSecsSinceEpoch(seconds);
            parts << QStringLiteral("Earlier map from ") +
                         QLocale().toString(when, QLocale::ShortFormat);
            action = QStringLiteral("Scan Again");
        }
        if (model_.mapNeedsRefresh()) {
            parts << QStringLiteral(
                "Files changed after this map was made; scan again for "
                "current sizes.");
            action = QStringLiteral("Scan Again");
        }
    } else if (!model_.scanError()) {
        parts << QStringLiteral("No map yet. Scan the startup disk or choose a folder.");
    }
    if (model_.isExploring()) {
        parts << QStringLiteral("Exploring %1… %2 folders, %3 files")
                     .arg(MapItemText::display(model_.exploringName()),
                          count(model_.exploredFolderCount()), count(model_.exploredFileCount()));
    }
    const QString text = parts.join(QStringLiteral(" · "));
    state_->setText(text);
    state_->setToolTip(text);
    setAccessibleName(scope + QStringLiteral(". ") + text);

    const int percent = progressPercent();
    progress_->setVisible(model_.isScanning());
    if (percent < 0) {
        progress_->setRange(0, 0);  // busy: no earlier map to measure against
    } else {
        progress_->setRange(0, 100);
        progress_->setValue(percent);
    }
    action_->setVisible(!action.isEmpty());
    action_->setText(action);
}

}  // namespace veldan::gui
