#include "tests/gui/GuiTestSupport.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include "platform/Paths.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan::test {

namespace {

class Application final : public ::testing::Environment {
public:
    void SetUp() override {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        application_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[16] = "veldan-gui-test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new Application);

}  // namespace

void click(QWidget* widget, QPointF point) {
    QTest::mouseMove(widget, point.toPoint());
    QTest::mouseClick(widget, Qt::LeftButton, {}, point.toPoint());
}

bool waitUntil(const std::function<bool()>& done, double seconds) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > seconds * 1000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::qWait(5);
    }
    return true;
}

std::shared_ptr<const DiskNode> sampleTree(const std::string& root) {
    auto folder = [&](const std::string& relative, std::vector<DiskNode> children) {
        return folderNode(platform::joinPath(root, relative), std::move(children));
    };
    auto file = [&](const std::string& relative, int64_t bytes) {
        return fileNode(platform::joinPath(root, relative), bytes);
    };
    DiskNode projects =
        folder("Projects", {folder("Projects/app", {file("Projects/app/a.bin", 3'000'000'000),
                                                    file("Projects/app/b.bin", 1'000'000'000)}),
                            file("Projects/notes.txt", 1'500'000'000)});
    DiskNode modules = folder("Projects/node_modules", {});
    modules.bytes = 900'000'000;
    projects.children.push_back(modules);
    projects.bytes += modules.bytes;
    DiskNode movies = folder("Movies", {file("Movies/trip.mov", 4'000'000'000)});
    movies.children.push_back(
        DiskNode::summary(movies.path, 600'000'000, {movies.path + "/trip.mov"}));
    movies.bytes += 600'000'000;
    auto tree = std::make_shared<DiskNode>(folderNode(
        root, {projects, movies, file("disk.img", 2'000'000'000), file("notes.md", 50'000'000)}));
    tree->name = std::string(platform::lastPathComponent(root));
    return tree;
}

}  // namespace veldan::test
