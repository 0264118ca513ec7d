#pragma once
// The tool screens that open beside the map, in one table: the sidebar, the Tools menu
// and the tray menu all list them from here, and ToolNavigation opens them.
//
// Adding a screen: write a function that builds its widget from the context and name it
// as the `create` of its tool in ToolScreens.cpp. A tool without one shows what it will
// offer.

#include <QKeySequence>
#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

#include "app/VeldanTool.hpp"

namespace veldan {
class DiskMapModel;
class ToolNavigation;
}  // namespace veldan

namespace veldan::gui {

struct ToolScreenContext {
    DiskMapModel& model;
    ToolNavigation& navigation;
};

struct ToolScreen {
    VeldanTool tool;
    QString title;        // sidebar and menu text
    QString description;  // what the tool does, one sentence
    QString iconName;     // a freedesktop icon name
    QKeySequence shortcut;
    std::function<QWidget*(const ToolScreenContext&, QWidget* parent)> create;

    // The screen's widget, or a page describing the tool when it has none yet.
    QWidget* build(const ToolScreenContext& context, QWidget* parent) const;
};

class ToolScreens {
public:
    // Every tool, in menu order.
    static const std::vector<ToolScreen>& all();
    static const ToolScreen& of(VeldanTool tool);
};

}  // namespace veldan::gui
