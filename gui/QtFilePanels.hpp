#pragma once
// The model's two file panels as Qt file dialogs: "Scan Folder" (folders only) and "Save
// Report" (plain text, may create folders) with the proposed name and the message of what
// the report reveals. Both are window-modal and answer once they close.

#include <QPointer>
#include <QWidget>

#include "app/FilePanels.hpp"

namespace veldan::gui {

class QtFilePanels final : public FilePanels {
public:
    explicit QtFilePanels(QWidget* window) : window_(window) {}

    void chooseFolderToScan(Answer done) override;
    void chooseReportDestination(const ReportSaveRequest& request, Answer done) override;

private:
    QPointer<QWidget> window_;
};

}  // namespace veldan::gui
