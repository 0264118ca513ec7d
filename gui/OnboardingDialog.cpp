#include "gui/OnboardingDialog.hpp"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "platform/Preferences.hpp"

namespace veldan::gui {

namespace {

QWidget* page(const QString& title, const QString& text, QWidget* parent) {
    auto* widget = new QWidget(parent);
    auto* layout = new QVBoxLayout(widget);
    auto* heading = new QLabel(QStringLiteral("<h2>%1</h2>").arg(title), widget);
    auto* body = new QLabel(text, widget);
    body->setWordWrap(true);
    body->setTextFormat(Qt::RichText);
    layout->addWidget(heading);
    layout->addWidget(body);
    layout->addStretch(1);
    widget->setAccessibleName(title);
    return widget;
}

}  // namespace

OnboardingDialog::OnboardingDialog(QWidget* parent)
    : QDialog(parent),
      pages_(new QStackedWidget(this)),
      counter_(new QLabel(this)),
      back_(new QPushButton(QStringLiteral("Back"), this)),
      next_(new QPushButton(QStringLiteral("Continue"), this)),
      dailyCheck_(
          new QCheckBox(QStringLiteral("Check free space and new downloads once a day"), this)) {
    setWindowTitle(QStringLiteral("Welcome to Veldan"));
    setMinimumWidth(560);
    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(64, 64));

    pages_->addWidget(page(
        QStringLiteral("Your disk as a map"),
        QStringLiteral("Veldan measures a folder or the whole disk and draws it as a map: each "
                       "item's area is its share of the space. Click a folder to zoom in, use "
                       "the path above the map to go back, and switch between the ring, the "
                       "tiles and a list at any time. Smaller items are grouped as "
                       "<i>Other</i>; explore them when you want to see them."),
        pages_));
    pages_->addWidget(page(
        QStringLiteral("Nothing is deleted outright"),
        QStringLiteral("When you clean up, items go to the Trash, and only after Veldan checks "
                       "once more that each one is exactly what it measured. A tool's own "
                       "cleanup command or a script you run yourself covers the rest. Space "
                       "comes back when you empty the Trash."),
        pages_));
    QWidget* privacy =
        page(QStringLiteral("Everything stays on this computer"),
             QStringLiteral("Maps, reports and history are kept in your home folder. Veldan sends "
                            "nothing anywhere. It can look at free space and new downloads once a "
                            "day, so you see how space changes over time."),
             pages_);
    dailyCheck_->setChecked(platform::Preferences::boolean(dailyCheckKey).value_or(false));
    privacy->layout()->addWidget(dailyCheck_);
    static_cast<QVBoxLayout*>(privacy->layout())->addStretch(1);
    pages_->addWidget(privacy);
    QWidget* start = page(QStringLiteral("Make your first map"),
                          QStringLiteral("Start with your home folder, where most of your own "
                                         "files are, or with the whole startup disk. Veldan "
                                         "shows the map while it measures."),
                          pages_);
    auto* home = new QPushButton(QStringLiteral("Scan Home Folder"), start);
    auto* disk = new QPushButton(QStringLiteral("Scan Startup Disk"), start);
    home->setDefault(true);
    auto* choices = new QHBoxLayout;
    choices->addWidget(home);
    choices->addWidget(disk);
    choices->addStretch(1);
    static_cast<QVBoxLayout*>(start->layout())->insertLayout(2, choices);
    pages_->addWidget(start);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(counter_);
    buttons->addStretch(1);
    buttons->addWidget(back_);
    buttons->addWidget(next_);
    auto* content = new QHBoxLayout;
    content->addWidget(icon, 0, Qt::AlignTop);
    content->addWidget(pages_, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(content, 1);
    layout->addLayout(buttons);

    connect(back_, &QPushButton::clicked, this, [this] { showStep(step() - 1); });
    connect(next_, &QPushButton::clicked, this, [this] { showStep(step() + 1); });
    connect(dailyCheck_, &QCheckBox::toggled, this,
            [](bool on) { platform::Preferences::setBoolean(dailyCheckKey, on); });
    const auto finish = [this](FirstScan scan) {
        platform::Preferences::setBoolean(completedKey, true);
        platform::Preferences::remove(stepKey);
        Q_EMIT finishedWith(scan);
        accept();
    };
    connect(home, &QPushButton::clicked, this, [finish] { finish(FirstScan::homeFolder); });
    connect(disk, &QPushButton::clicked, this, [finish] { finish(FirstScan::startupDisk); });

    showStep(static_cast<int>(platform::Preferences::integer(stepKey).value_or(0)));
}

int OnboardingDialog::step() const {
    return pages_->currentIndex();
}

int OnboardingDialog::stepCount() const {
    return pages_->count();
}

void OnboardingDialog::showStep(int step) {
    step = std::clamp(step, 0, stepCount() - 1);
    pages_->setCurrentIndex(step);
    platform::Preferences::setInteger(stepKey, step);
    counter_->setText(QStringLiteral("Step %1 of %2").arg(step + 1).arg(stepCount()));
    back_->setEnabled(step > 0);
    next_->setVisible(step + 1 < stepCount());
}

}  // namespace veldan::gui
