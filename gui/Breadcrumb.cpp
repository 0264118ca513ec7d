#include "gui/Breadcrumb.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace veldan::gui {

Breadcrumb::Breadcrumb(QWidget* parent) : QWidget(parent), layout_(new QHBoxLayout(this)) {
    layout_->setContentsMargins(4, 2, 4, 2);
    layout_->setSpacing(2);
    setAccessibleName(QStringLiteral("Folder path"));
}

void Breadcrumb::setCrumbs(const std::vector<MapNavigation::Crumb>& crumbs) {
    while (QLayoutItem* item = layout_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (size_t depth = 0; depth < crumbs.size(); ++depth) {
        if (depth > 0) {
            auto* separator = new QLabel(QStringLiteral("›"), this);
            separator->setEnabled(false);
            layout_->addWidget(separator);
        }
        auto* button = new QToolButton(this);
        const QString name = QString::fromStdString(crumbs[depth].name);
        button->setText(name.size() > 40 ? name.left(38) + QStringLiteral("…") : name);
        button->setToolTip(QString::fromStdString(crumbs[depth].path));
        button->setAutoRaise(true);
        const bool last = depth + 1 == crumbs.size();
        button->setAccessibleName(last ? QStringLiteral("Shown folder: ") + name
                                       : QStringLiteral("Back to ") + name);
        if (last) {
            QFont font = button->font();
            font.setBold(true);
            button->setFont(font);
        }
        connect(button, &QToolButton::clicked, this, [this, depth] { Q_EMIT crumbClicked(depth); });
        layout_->addWidget(button);
    }
    layout_->addStretch(1);
}

}  // namespace veldan::gui
