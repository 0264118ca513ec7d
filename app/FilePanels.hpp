#pragma once
// The two file panels the model asks the user through: the folder to scan and where to
// save a report. The window supplies them (QFileDialog), tests supply answers, so the
// model never touches a widget.
//
// Contract: called on the model's thread. A panel may answer at once or later (a sheet
// that stays open while the event loop runs); it calls `done` exactly once, on the
// model's thread, with the chosen path or nothing when the user cancelled.

#include <functional>
#include <optional>
#include <string>

namespace veldan {

struct ReportSaveRequest {
    std::string proposedName;  // "Veldan - Scan Summary.txt", ...
    std::string message;       // what the report reveals, shown in the panel
    std::string prompt = "Save Report";
    std::string folder;  // where the panel starts; empty: its own choice
};

class FilePanels {
public:
    using Answer = std::function<void(std::optional<std::string> path)>;

    virtual ~FilePanels() = default;
    // Folders only, one at a time, prompt "Scan Folder".
    virtual void chooseFolderToScan(Answer done) = 0;
    // Plain text, may create folders, prompt `request.prompt`.
    virtual void chooseReportDestination(const ReportSaveRequest& request, Answer done) = 0;
};

}  // namespace veldan
