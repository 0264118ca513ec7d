#pragma once
// Asks the main window to open a tool screen. The tray menu, the menu commands and the
// command line's `--tool NAME` set `pendingTool`; the window switches to that screen and
// then clears it, so asking for the same tool twice opens it twice.
//
// Contract: a QObject of the main thread; every member is called there.

#include <QObject>
#include <optional>
#include <string>
#include <vector>

#include "app/VeldanTool.hpp"

namespace veldan {

class ToolNavigation : public QObject {
    Q_OBJECT

public:
    explicit ToolNavigation(QObject* parent = nullptr);

    std::optional<VeldanTool> pendingTool() const { return pendingTool_; }
    void open(VeldanTool tool);
    // The window calls this once it shows the pending tool.
    void clearPendingTool();

    // The tool named by the argument after the first "--tool"; nothing when there is no
    // such argument or it names no tool.
    static std::optional<VeldanTool> commandLineTool(const std::vector<std::string>& arguments);

Q_SIGNALS:
    void pendingToolChanged();

private:
    std::optional<VeldanTool> pendingTool_;
};

}  // namespace veldan
