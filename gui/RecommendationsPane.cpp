#include "gui/RecommendationsPane.hpp"

#include <QHeaderView>

#include "app/DiskMapModel.hpp"
#include "gui/DesktopServices.hpp"
#include "gui/MapItemText.hpp"
#include "scan/SizeText.hpp"

namespace veldan::gui {

RecommendationsPane::RecommendationsPane(DiskMapModel& model, QWidget* parent)
    : QTreeWidget(parent), model_(model) {
    setColumnCount(2);
    setHeaderLabels({QStringLiteral("Recommendations"), QStringLiteral("Size")});
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    setRootIsDecorated(false);
    setAccessibleName(QStringLiteral("Recommendations"));
    setMinimumWidth(240);
    connect(&model_, &DiskMapModel::recommendationsChanged, this, &RecommendationsPane::refresh);
    connect(&model_, &DiskMapModel::isScanningChanged, this, &RecommendationsPane::refresh);
    connect(this, &QTreeWidget::itemActivated, this, [](QTreeWidgetItem* item) {
        const QByteArray path = item->data(0, Qt::UserRole).toByteArray();
        if (!path.isEmpty()) DesktopServices::showInFileManager(path.toStdString());
    });
    refresh();
}

void RecommendationsPane::refresh() {
    clear();
    for (const auto kind : {RecommendationKind::safe, RecommendationKind::review}) {
        auto* group = new QTreeWidgetItem(this);
        for (const auto& recommendation : model_.recommendations()) {
            if (recommendation.kind != kind) continue;
            auto* item = new QTreeWidgetItem(group);
            item->setText(0, QString::fromStdString(recommendation.title));
            item->setText(1, QString::fromStdString(SizeText::string(recommendation.bytes)));
            item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            QStringList paths;
            for (const auto& path : recommendation.paths)
                paths << MapItemText::display(path);
            item->setToolTip(0, QString::fromStdString(recommendation.subtitle) +
                                    QStringLiteral("\n") + paths.join(QStringLiteral("\n")));
            if (!recommendation.paths.empty()) {
                // Raw bytes: a folder name need not be UTF-8.
                item->setData(0, Qt::UserRole,
                              QByteArray::fromStdString(recommendation.paths.front()));
            }
        }
        const std::string_view name = title(kind);
        group->setText(0, QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
        QFont bold = group->font(0);
        bold.setBold(true);
        group->setFont(0, bold);
        if (group->childCount() == 0) {
            auto* none = new QTreeWidgetItem(group);
            none->setText(0, model_.isScanning() ? QStringLiteral("Listed when the scan finishes")
                                                 : QStringLiteral("Nothing here for this map"));
            none->setDisabled(true);
        }
        group->setExpanded(true);
        group->setFlags(Qt::ItemIsEnabled);
    }
}

}  // namespace veldan::gui
