#include "gui/ToolScreens.hpp"

#include <QLabel>
#include <QVBoxLayout>

namespace veldan::gui {

QWidget* ToolScreen::build(const ToolScreenContext& context, QWidget* parent) const {
    if (create) return create(context, parent);
    auto* page = new QWidget(parent);
    auto* layout = new QVBoxLayout(page);
    auto* heading = new QLabel(QStringLiteral("<h2>%1</h2>").arg(title.toHtmlEscaped()), page);
    auto* text = new QLabel(description, page);
    text->setWordWrap(true);
    layout->addStretch(1);
    layout->addWidget(heading, 0, Qt::AlignHCenter);
    layout->addWidget(text, 0, Qt::AlignHCenter);
    layout->addStretch(2);
    page->setAccessibleName(title);
    return page;
}

const std::vector<ToolScreen>& ToolScreens::all() {
    static const std::vector<ToolScreen> screens = {
        {VeldanTool::duplicates,
         QStringLiteral("Duplicates"),
         QStringLiteral("Find verified copies of large files and move the extra ones to the "
                        "Trash; one copy always stays."),
         QStringLiteral("edit-copy"),
         QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1),
         {}},
        {VeldanTool::devCleanup,
         QStringLiteral("Developer Folders"),
         QStringLiteral("Dependency folders, build output and Python environments that your "
                        "projects can make again."),
         QStringLiteral("applications-development"),
         QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_2),
         {}},
        {VeldanTool::aiStorage,
         QStringLiteral("AI Storage"),
         QStringLiteral("What local AI tools keep on this computer: models, caches and logs."),
         QStringLiteral("applications-science"),
         QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_3),
         {}},
        {VeldanTool::activity,
         QStringLiteral("Activity"),
         QStringLiteral("Free space day by day, recent downloads and the cleanups you made."),
         QStringLiteral("document-open-recent"),
         QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_4),
         {}},
    };
    return screens;
}

const ToolScreen& ToolScreens::of(VeldanTool tool) {
    for (const auto& screen : all()) {
        if (screen.tool == tool) return screen;
    }
    return all().front();
}

}  // namespace veldan::gui
