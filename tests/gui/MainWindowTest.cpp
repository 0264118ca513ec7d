// The window as a person uses it, on real folders with the real model: the view choice
// persists, a dropped folder is mapped and zoomed into, the tray menu works, the report
// item follows the scan and saves under its proposed name, messages show until dismissed,
// first-run steps are kept, and a second launch hands its folder to the running window.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <future>

#include "activity/WidgetDigest.hpp"
#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "cache/ScanCache.hpp"
#include "gui/MainWindow.hpp"
#include "gui/MapPane.hpp"
#include "gui/MapStatusLine.hpp"
#include "gui/MessageBanner.hpp"
#include "gui/OnboardingDialog.hpp"
#include "gui/SingleInstance.hpp"
#include "gui/TrayIcon.hpp"
#include "gui/TrayStatus.hpp"
#include "gui/TreemapView.hpp"
#include "gui/WindowActions.hpp"
#include "platform/Preferences.hpp"
#include "tests/gui/GuiTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"

namespace veldan::gui {
namespace {

using platform::Preferences;

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"tree/Projects/app", "tree/Music"})
            test::makeFolders(home / name);
        test::writeFileOfSize(home / "tree/Projects/app/build.bin", 300'000);
        test::writeFileOfSize(home / "tree/Projects/notes.txt", 120'000);
        test::writeFileOfSize(home / "tree/Music/song.mp3", 200'000);
        // Onboarding is done and the last map was of the tree: startup restores or scans it.
        Preferences::setBoolean(OnboardingDialog::completedKey, true);
        Preferences::setString(DiskMapModel::lastScanPathKey, home / "tree");
    }
    void TearDown() override { ScanCache::shared().drain(); }

    void open(DiskMapModelSeams seams = {}) {
        DiskMapModelOptions options;
        options.arguments = {"veldan-app"};
        options.seams = std::move(seams);
        model = std::make_unique<DiskMapModel>(std::move(options));
        window = std::make_unique<MainWindow>(*model, tools);
        window->show();
    }
    bool mapShows(const std::string& path) {
        return test::waitUntil([&] {
            const auto* folder = window->mapPane()->navigation().content().folder();
            return !model->isScanning() && model->snapshot() && folder && folder->path == path;
        });
    }

    test::IsolatedHome home;
    ToolNavigation tools;
    std::unique_ptr<DiskMapModel> model;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, TheChosenViewIsKeptForTheNextWindow) {
    open();
    EXPECT_EQ(window->mapPane()->viewMode(), MapViewMode::orbit);  // the default
    window->actions()->treemapView->trigger();
    window.reset();
    open();
    EXPECT_EQ(window->mapPane()->viewMode(), MapViewMode::treemap);
    EXPECT_TRUE(window->actions()->treemapView->isChecked());
    window->actions()->listView->trigger();
    EXPECT_EQ(Preferences::boolean("veldanExplorerListMode"), true);
    window.reset();
    open();
    EXPECT_EQ(window->mapPane()->viewMode(), MapViewMode::list);
}

TEST_F(MainWindowTest, ADroppedFolderIsMappedAndItsFoldersZoomInAndBack) {
    open();
    ASSERT_TRUE(mapShows(home / "tree"));
    const std::string dropped = home / "tree/Projects";
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(dropped))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(window.get(), &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(window.get(), &drop);
    ASSERT_TRUE(mapShows(dropped));
    EXPECT_EQ(model->recentFolders().front(), dropped);

    window->actions()->treemapView->trigger();
    TreemapView* treemap = window->mapPane()->treemap();
    const DiskNode* app = nullptr;
    for (const auto* item : window->mapPane()->navigation().content().items())
        if (item->name == "app") app = item;
    ASSERT_NE(app, nullptr);
    test::click(treemap, *treemap->pointOf(app));
    EXPECT_EQ(window->mapPane()->navigation().content().folder()->path, dropped + "/app");
    EXPECT_TRUE(window->actions()->rescanFolder->isEnabled());
    QTest::keyClick(treemap, Qt::Key_Backspace);
    EXPECT_EQ(window->mapPane()->navigation().content().folder()->path, dropped);
}

TEST_F(MainWindowTest, TheTrayMenuOpensTheWindowScansAndOpensTools) {
    open();
    ASSERT_TRUE(mapShows(home / "tree"));
    TrayIcon tray(*window->actions());
    QStringList texts;
    for (const QAction* action : tray.menu()->actions())
        if (!action->isSeparator()) texts << action->text();
    EXPECT_EQ(texts,
              (QStringList{"Open Veldan", "Scan Startup Disk", "Scan Home Folder", "Duplicates",
                           "Developer Folders", "AI Storage", "Activity", "Quit"}));
    window->hide();
    tray.menu()->actions()[0]->trigger();
    EXPECT_TRUE(window->isVisible());

    const auto item = [&](const QString& text) {
        for (QAction* action : tray.menu()->actions())
            if (action->text() == text) return action;
        return static_cast<QAction*>(nullptr);
    };
    item("Activity")->trigger();
    EXPECT_EQ(window->currentPage(), 4);
    EXPECT_EQ(tools.pendingTool(), std::nullopt);
    item("Scan Home Folder")->trigger();
    EXPECT_EQ(window->currentPage(), 0);
    ASSERT_TRUE(mapShows(home.home()));

    // The icon's words come from the digest that `veldan status` reads too.
    WidgetDigest digest = WidgetDigest::initial(home.home());
    digest.hasCompletedScan = true;
    digest.safeCount = 1;
    digest.safeBytes = 2'000'000'000;
    WidgetDigest::save(digest);
    WidgetDigest::drain();
    TrayStatus status(*model, tray);
    QSignalSpy shown(&status, &TrayStatus::shown);
    ASSERT_TRUE(test::waitUntil([&] { return !shown.isEmpty(); }));
    EXPECT_TRUE(shown.back()[0].toString().startsWith("Home folder: "));
    EXPECT_TRUE(tray.status().contains("2.0 GB safe to clean")) << tray.status().toStdString();

    // This desktop has no tray: the item says so instead of doing nothing.
    EXPECT_FALSE(window->actions()->trayIcon->isEnabled());
    EXPECT_EQ(window->actions()->trayIcon->text(), "Show Tray Icon (this desktop has no tray)");
}

QFileDialog* openDialog() {
    QFileDialog* dialog = nullptr;
    test::waitUntil([&] {
        dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        return dialog != nullptr;
    });
    return dialog;
}

TEST_F(MainWindowTest, TheReportItemFollowsTheScanAndSavesUnderItsProposedName) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    bool hold = true;
    open({.scanFinished = [&hold, released] {
        if (hold) released.wait();
    }});
    ASSERT_TRUE(test::waitUntil([&] { return model->isScanning(); }));
    EXPECT_EQ(window->actions()->saveSummary->text(), "Save Scan Progress…");
    EXPECT_TRUE(window->actions()->stop->isEnabled());
    hold = false;
    release.set_value();
    ASSERT_TRUE(mapShows(home / "tree"));
    EXPECT_EQ(window->actions()->saveSummary->text(), "Save Scan Summary…");
    EXPECT_FALSE(window->actions()->stop->isEnabled());

    window->actions()->saveSummary->trigger();
    QFileDialog* dialog = openDialog();
    ASSERT_NE(dialog, nullptr);
    ASSERT_EQ(dialog->selectedFiles().size(), 1);
    EXPECT_TRUE(dialog->selectedFiles().front().endsWith("/Veldan - Scan Summary.txt"));
    EXPECT_EQ(dialog->windowTitle(), "This report includes local file paths.");
    const std::string target = home / "Veldan - Scan Summary.txt";
    dialog->selectFile(QString::fromStdString(target));
    static_cast<QDialog*>(dialog)->accept();
    ASSERT_TRUE(test::waitUntil([&] { return test::exists(target); }));
    EXPECT_NE(test::readFile(target).find(home / "tree"), std::string::npos);
}

TEST_F(MainWindowTest, MessagesShowInTheBannerUntilDismissed) {
    open();
    ASSERT_TRUE(mapShows(home / "tree"));
    model->scan(home / "gone");
    ASSERT_TRUE(test::waitUntil([&] { return model->scanError().has_value(); }));
    EXPECT_TRUE(window->banner()->isVisible());
    EXPECT_EQ(window->banner()->text().toStdString(), *model->scanError());
    window->banner()->findChild<QAbstractButton*>()->click();
    EXPECT_FALSE(window->banner()->isVisible());
    EXPECT_FALSE(model->scanError().has_value());
    // The map of before stays, and says what it is.
    EXPECT_EQ(window->mapPane()->navigation().content().folder()->path, home / "tree");
    EXPECT_TRUE(window->statusLine()->stateText().contains("folders and"));
}

TEST(OnboardingDialog, KeepsItsStepAndFinishesWithTheFirstScan) {
    test::IsolatedHome home;
    {
        OnboardingDialog dialog;
        EXPECT_EQ(dialog.step(), 0);
        dialog.showStep(2);
    }
    OnboardingDialog dialog;
    EXPECT_EQ(dialog.step(), 2);  // a closed window resumes where it was
    QSignalSpy finished(&dialog, &OnboardingDialog::finishedWith);
    dialog.showStep(dialog.stepCount() - 1);
    for (auto* button : dialog.findChildren<QAbstractButton*>())
        if (button->text() == "Scan Startup Disk") button->click();
    ASSERT_EQ(finished.size(), 1);
    EXPECT_EQ(finished[0][0].value<OnboardingDialog::FirstScan>(),
              OnboardingDialog::FirstScan::startupDisk);
    EXPECT_EQ(Preferences::boolean(OnboardingDialog::completedKey), true);
    EXPECT_EQ(Preferences::integer(OnboardingDialog::stepKey), std::nullopt);
}

TEST(SingleInstance, ASecondLaunchHandsItsFolderToTheRunningOne) {
    test::IsolatedHome home;
    test::ScopedEnvironment environment;
    environment.set("XDG_RUNTIME_DIR", home.home());
    SingleInstance running;
    ASSERT_TRUE(running.listen());
    EXPECT_FALSE(SingleInstance().listen());
    QSignalSpy requests(&running, &SingleInstance::requested);

    test::makeFolders(home / "Music");
    const auto launch = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VELDAN_APP);
        auto process = std::async(std::launch::async, [arguments, &home] {
            auto variables = home.environment();
            variables["XDG_RUNTIME_DIR"] = home.home();
            variables["QT_QPA_PLATFORM"] = "offscreen";
            return test::runProcess(arguments,
                                    {.environment = variables, .workingFolder = home.home()});
        });
        const size_t before = static_cast<size_t>(requests.size());
        EXPECT_TRUE(test::waitUntil([&] { return static_cast<size_t>(requests.size()) > before; }));
        EXPECT_EQ(process.get().exitCode, 0);
        return requests.back()[0].value<std::optional<std::string>>();
    };
    EXPECT_EQ(launch({"--scan", "Music"}), home / "Music");  // relative to where it started
    EXPECT_EQ(launch({home / "Music"}), home / "Music");     // as a desktop passes a folder
    EXPECT_EQ(launch({"--scan", home / "missing"}), "/");    // the startup disk instead
    EXPECT_EQ(launch({}), std::nullopt);                     // just the window
}

}  // namespace
}  // namespace veldan::gui
