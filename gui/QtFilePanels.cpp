#include "gui/QtFilePanels.hpp"

#include <QFile>
#include <QFileDialog>
#include <memory>

#include "platform/UserFolders.hpp"

namespace veldan::gui {

namespace {

QString fromPath(const std::string& path) {
    return QFile::decodeName(QByteArray::fromStdString(path));
}

// Opens `dialog` and answers `done` exactly once with the chosen path or nothing.
void ask(QFileDialog* dialog, FilePanels::Answer done) {
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto answer = std::make_shared<FilePanels::Answer>(std::move(done));
    QObject::connect(dialog, &QFileDialog::finished, dialog, [dialog, answer](int result) {
        if (!*answer) return;
        const auto files = dialog->selectedFiles();
        std::optional<std::string> path;
        if (result == QDialog::Accepted && !files.isEmpty()) {
            path = QFile::encodeName(files.front()).toStdString();
        }
        auto reply = std::move(*answer);
        *answer = nullptr;
        reply(std::move(path));
    });
    dialog->open();
}

}  // namespace

void QtFilePanels::chooseFolderToScan(Answer done) {
    auto* dialog =
        new QFileDialog(window_, QStringLiteral("Scan Folder"), fromPath(platform::homeFolder()));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Scan Folder"));
    ask(dialog, std::move(done));
}

void QtFilePanels::chooseReportDestination(const ReportSaveRequest& request, Answer done) {
    const QString folder =
        fromPath(request.folder.empty() ? platform::homeFolder() : request.folder);
    auto* dialog = new QFileDialog(window_, QString::fromStdString(request.message), folder);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setNameFilter(QStringLiteral("Plain text (*.txt)"));
    dialog->setDefaultSuffix(QStringLiteral("txt"));
    dialog->setLabelText(QFileDialog::Accept, QString::fromStdString(request.prompt));
    dialog->selectFile(QString::fromStdString(request.proposedName));
    ask(dialog, std::move(done));
}

}  // namespace veldan::gui
