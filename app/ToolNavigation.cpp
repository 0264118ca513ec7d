#include "app/ToolNavigation.hpp"

#include <algorithm>

namespace veldan {

ToolNavigation::ToolNavigation(QObject* parent) : QObject(parent) {}

void ToolNavigation::open(VeldanTool tool) {
    // Always announced, even for the tool already pending: the window may have been
    // hidden in the tray and must come forward again.
    pendingTool_ = tool;
    Q_EMIT pendingToolChanged();
}

void ToolNavigation::clearPendingTool() {
    if (!pendingTool_) return;
    pendingTool_.reset();
    Q_EMIT pendingToolChanged();
}

std::optional<VeldanTool> ToolNavigation::commandLineTool(
    const std::vector<std::string>& arguments) {
    auto flag = std::find(arguments.begin(), arguments.end(), "--tool");
    if (flag == arguments.end() || std::next(flag) == arguments.end()) return std::nullopt;
    return veldanToolFromRawValue(*std::next(flag));
}

}  // namespace veldan
