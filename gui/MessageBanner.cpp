#include "gui/MessageBanner.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include "platform/Wording.hpp"

namespace veldan::gui {

MessageBanner::MessageBanner(QWidget* parent)
    : QFrame(parent), label_(new QLabel(this)), close_(new QToolButton(this)) {
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 6, 6, 6);
    label_->setWordWrap(true);
    label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    close_->setText(QStringLiteral("✕"));
    close_->setAutoRaise(true);
    close_->setToolTip(QStringLiteral("Dismiss"));
    close_->setAccessibleName(QStringLiteral("Dismiss message"));
    layout->addWidget(label_, 1);
    layout->addWidget(close_, 0, Qt::AlignTop);
    connect(close_, &QToolButton::clicked, this, &MessageBanner::dismissed);
    setVisible(false);
}

void MessageBanner::show(const std::optional<std::string>& error,
                         const std::optional<std::string>& notice) {
    const auto& message = error ? error : notice;
    if (!message) {
        setVisible(false);
        return;
    }
    label_->setText(QString::fromStdString(platform::localWording(*message)));
    // A failure stands out in the palette's warning tone, a notice stays quiet.
    QPalette colours = palette();
    const QColor base = colours.color(QPalette::Window);
    const bool dark = base.lightnessF() < 0.5;
    const QColor tint =
        error ? QColor(dark ? "#5a2a24" : "#fde2dc") : QColor(dark ? "#233a57" : "#dde9fb");
    colours.setColor(QPalette::Window, tint);
    setPalette(colours);
    setAccessibleName(error ? QStringLiteral("Problem") : QStringLiteral("Notice"));
    setAccessibleDescription(label_->text());
    setVisible(true);
}

QString MessageBanner::text() const {
    return isVisible() ? label_->text() : QString();
}

}  // namespace veldan::gui
