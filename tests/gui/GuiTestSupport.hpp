#pragma once
// Widget tests run against a real QApplication on the offscreen platform, created once
// for the whole binary after TestMain has pointed HOME and XDG_* at a private folder.

#include <QPoint>
#include <QWidget>
#include <memory>

#include "scan/DiskNode.hpp"

namespace veldan::test {

// Sends a real press and release of the left button at `point` of `widget`.
void click(QWidget* widget, QPointF point);
// Lets queued events run until `done` holds or `seconds` pass; returns `done()`.
bool waitUntil(const std::function<bool()>& done, double seconds = 10);

// A tree shaped like a home folder: folders with nested folders, a grouped "Other", a
// folder measured whole, and files.
std::shared_ptr<const DiskNode> sampleTree(const std::string& root = "/home/ana");

}  // namespace veldan::test
