// The scan lifecycle of the application model on real folders: starts and their
// refusals, completion, stops, late answers, recent folders, saved maps and startup.

#include <gtest/gtest.h>
#include <stdio.h>

#include <QSignalSpy>
#include <QTimer>
#include <algorithm>
#include <future>

#include "activity/WidgetDigest.hpp"
#include "app/DiskMapModel.hpp"
#include "cache/ScanCache.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "tests/app/AppTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan::test {
namespace {

using platform::Preferences;

class DiskMapModelScanTest : public ModelTest {
protected:
    // Replaces `path` by a new, empty folder of the same name.
    static void replaceFolder(const std::string& path) {
        ASSERT_EQ(::rename(path.c_str(), (path + ".old").c_str()), 0);
        makeFolders(path);
    }
};

TEST_F(DiskMapModelScanTest, FinishedScanShowsItsMapAndIsRemembered) {
    const std::string path = folder("Projects");
    {
        auto model = startedModel();
        QSignalSpy busy(model.get(), &DiskMapModel::isDoingBackgroundWorkChanged);
        model->runDailyTrackingNow(true);
        ASSERT_TRUE(model->isRunningDailyCheck());
        scanAndWait(*model, path);
        EXPECT_FALSE(model->isRunningDailyCheck());  // the user's scan wins
        ASSERT_TRUE(model->snapshot());
        EXPECT_EQ(model->snapshot()->root.path, path);
        EXPECT_GE(model->snapshot()->root.bytes, 60'000);
        EXPECT_FALSE(model->isShowingCachedScan());
        EXPECT_FALSE(model->wasScanStopped());
        EXPECT_FALSE(model->scanError());
        EXPECT_EQ(model->selectedURL(), path);
        EXPECT_EQ(model->scanGeneration(), 1);
        EXPECT_EQ(model->recentFolders(), std::vector<std::string>{path});
        EXPECT_FALSE(model->snapshotCategoryBytes().empty());
        EXPECT_EQ(busy.count(), 2);  // busy while scanning, then idle
        EXPECT_FALSE(model->isDoingBackgroundWork());
        model->applicationWillTerminate();
        const auto digest = WidgetDigest::load();
        ASSERT_TRUE(digest);
        EXPECT_EQ(digest->scopeName, "Projects");
        EXPECT_GE(digest->mappedBytes, 60'000);
    }
    EXPECT_EQ(Preferences::string(DiskMapModel::lastScanPathKey), path);
    EXPECT_EQ(Preferences::strings("recentScanFolders"), std::vector<std::string>{path});
    ScanCache::shared().drain();
    EXPECT_TRUE(ScanCache::shared().load(path));
}

TEST_F(DiskMapModelScanTest, RecentFoldersKeepTheNewestFiveAndNeverTheStartupDisk) {
    auto model = startedModel();
    std::vector<std::string> folders;
    for (int index = 1; index <= 7; ++index) {
        folders.push_back(folder("F" + std::to_string(index)));
        scanAndWait(*model, folders.back());
    }
    const std::vector<std::string> newestFive(folders.rbegin(), folders.rbegin() + 5);
    EXPECT_EQ(model->recentFolders(), newestFive);

    model->scan("/");
    ASSERT_TRUE(waitUntil([&] { return model->isScanning(); }));
    EXPECT_EQ(model->selectedURL(), "/");
    EXPECT_EQ(model->recentFolders(), newestFive);
    model->applicationWillTerminate();  // quitting mid-scan: the digest must not say scanning
    EXPECT_EQ(WidgetDigest::load()->scanState, WidgetScanState::stopped);
    model.reset();
    EXPECT_EQ(Preferences::strings("recentScanFolders"), newestFive);
    EXPECT_EQ(Preferences::string(DiskMapModel::lastScanPathKey), "/");
}

TEST_F(DiskMapModelScanTest, RefusedStartsLeaveTheMapAsItWas) {
    const std::string shown = folder("Shown");
    const std::string replaced = folder("Replaced");
    struct Case {
        std::string path;
        std::string error;
    };
    const Case cases[] = {
        {home / "Missing", "This folder is no longer available: " + (home / "Missing")},
        {replaced, "This folder changed before the scan could start. Choose it again."},
    };
    std::string replaceOnStart;  // the folder to replace when its scan starts
    DiskMapModelSeams seams;
    seams.beforeRootIdentity = [&] {
        if (!replaceOnStart.empty()) replaceFolder(std::exchange(replaceOnStart, {}));
    };
    auto model = startedModel({}, seams);
    scanAndWait(*model, shown);
    const auto map = model->snapshot();
    for (const auto& refused : cases) {
        SCOPED_TRACE(refused.path);
        if (refused.path == replaced) replaceOnStart = replaced;
        scanAndWait(*model, refused.path);
        EXPECT_EQ(model->scanError(), refused.error);
        EXPECT_EQ(model->snapshot(), map);
        EXPECT_EQ(model->scanGeneration(), 1);
        EXPECT_EQ(model->selectedURL(), shown);
        EXPECT_FALSE(model->isScanning());
    }
}

TEST_F(DiskMapModelScanTest, FolderReplacedDuringTheScanIsNotMapped) {
    const std::string path = folder("Changing");
    DiskMapModelSeams seams;
    seams.scanFinished = [&] { replaceFolder(path); };
    auto model = startedModel({}, seams);
    scanAndWait(*model, path);
    EXPECT_EQ(model->scanError(),
              "This folder changed during the scan. Choose it again for a fresh map.");
    EXPECT_FALSE(model->snapshot());
    EXPECT_FALSE(model->isScanning());
    EXPECT_FALSE(model->isDoingBackgroundWork());
}

TEST_F(DiskMapModelScanTest, ResultsArrivingAfterAStopOrANewerStartAreDropped) {
    const std::string first = folder("First");
    const std::string second = folder("Second");
    for (const bool stop : {true, false}) {
        SCOPED_TRACE(stop ? "stopped" : "superseded");
        // The first worker finishes and waits until the test has stopped or replaced it;
        // its answer then reaches the model late.
        std::promise<void> finished;
        std::promise<void> release;
        auto released = release.get_future().share();
        bool firstWorker = true;
        DiskMapModelSeams seams;
        seams.scanFinished = [&] {
            if (!std::exchange(firstWorker, false)) return;
            finished.set_value();
            released.wait();
        };
        auto model = startedModel({}, seams);
        QSignalSpy maps(model.get(), &DiskMapModel::snapshotChanged);
        model->scan(first);
        ASSERT_TRUE(waitUntil([&] { return model->isScanning(); }));
        finished.get_future().wait();
        if (stop) {
            model->cancelScan();
        } else {
            model->scan(second);
            ASSERT_TRUE(waitUntil([&] { return model->selectedURL() == second; }));
        }
        release.set_value();
        model->waitForBackgroundTasks();
        ASSERT_TRUE(waitUntil([&] { return !model->isScanning(); }));
        QCoreApplication::processEvents();
        if (stop) {
            EXPECT_FALSE(model->snapshot());
            EXPECT_TRUE(model->wasScanStopped());
        } else {
            ASSERT_TRUE(model->snapshot());
            EXPECT_EQ(model->snapshot()->root.path, second);
            EXPECT_EQ(maps.count(), 1);
        }
    }
}

TEST_F(DiskMapModelScanTest, StartupChoosesTheFirstMap) {
    const std::string existing = folder("Chosen");
    struct Case {
        std::vector<std::string> arguments;
        std::string scanned;  // empty: nothing is scanned, onboarding runs
    };
    const Case cases[] = {
        {{"--scan", existing}, existing},
        {{"--scan", home / "Unplugged"}, "/"},
        {{"--scan"}, ""},
        {{}, ""},
    };
    for (const auto& startup : cases) {
        SCOPED_TRACE(startup.scanned);
        auto model = startedModel(startup.arguments);
        if (startup.scanned.empty()) {
            EXPECT_TRUE(model->needsOnboarding());
            EXPECT_EQ(model->scanGeneration(), 0);
            continue;
        }
        ASSERT_TRUE(waitUntil([&] { return model->scanGeneration() == 1; }));
        EXPECT_EQ(model->selectedURL(), startup.scanned);
        EXPECT_FALSE(model->needsOnboarding());
        model->cancelScan();
    }
}

TEST_F(DiskMapModelScanTest, UnpluggedLastFolderShowsTheStartupDiskWithANotice) {
    ScanSnapshot startupMap;
    startupMap.root.path = "/";
    startupMap.root.name = "/";
    startupMap.root.isDirectory = true;
    startupMap.root.bytes = 1234;
    startupMap.finishedAt = std::chrono::system_clock::now();
    ASSERT_EQ(ScanCache::shared().saveNow(startupMap, "/"), ScanCache::SaveOutcome::saved);
    const std::string unplugged = "/media/backup-disk/Photos";
    Preferences::setBoolean(DiskMapModel::didCompleteOnboardingKey, true);
    Preferences::setString(DiskMapModel::lastScanPathKey, unplugged);

    auto model = startedModel();
    ASSERT_TRUE(waitUntil([&] { return model->snapshot() != nullptr; }));
    EXPECT_EQ(model->snapshot()->root, startupMap.root);
    EXPECT_TRUE(model->isShowingCachedScan());
    EXPECT_FALSE(model->isScanning());
    EXPECT_EQ(model->selectedURL(), "/");
    EXPECT_EQ(model->locationNotice(), "Your last scan folder isn\u2019t available: " + unplugged +
                                           ". Showing the startup disk instead.");
}

TEST_F(DiskMapModelScanTest, RecentFolderOpensItsSavedMapOrSaysItIsGone) {
    const std::string path = folder("Recent");
    auto model = startedModel();
    scanAndWait(*model, path);
    ScanCache::shared().drain();
    const auto scanned = model->snapshot();

    model->scanRecent(path);
    ASSERT_TRUE(waitUntil([&] { return model->isShowingCachedScan(); }));
    EXPECT_EQ(model->snapshot()->root, scanned->root);
    EXPECT_EQ(model->snapshot()->visitedFileCount, scanned->visitedFileCount);
    EXPECT_EQ(model->scanGeneration(), 1);

    const std::string gone = home / "Gone";
    model->scanRecent(gone);
    ASSERT_TRUE(waitUntil([&] { return model->scanError().has_value(); }));
    EXPECT_EQ(
        model->scanError(),
        "This recent folder isn\u2019t available. Reconnect its disk, then try again: " + gone);
}

TEST_F(DiskMapModelScanTest, MapBecomesOutdatedWhenFilesChangeInsideIt) {
    const std::string path = folder("Watched");
    const std::string elsewhere = folder("Elsewhere");
    auto model = startedModel();
    scanAndWait(*model, path);
    QSignalSpy outdated(model.get(), &DiskMapModel::mapNeedsRefreshChanged);

    model->markMapNeedsRefresh({elsewhere + "/a.bin", path + "-sibling"});
    model->refreshMapFreshness();  // nothing changed yet
    model->waitForBackgroundTasks();
    QCoreApplication::processEvents();
    EXPECT_EQ(outdated.count(), 0);

    writeFile(path + "/inner/new.txt", "new");
    ASSERT_TRUE(waitUntil([&] {
        model->refreshMapFreshness();
        return model->mapNeedsRefresh();
    }));
    EXPECT_EQ(outdated.count(), 1);
}

TEST_F(DiskMapModelScanTest, PreservedSelectionKeepsWhatStillExistsAndSaysWhenSomeChanged) {
    const std::string path = folder("Web");
    makeFolders(path + "/site/.next");
    writeFile(path + "/site/package.json", "{}");
    writeFileOfSize(path + "/site/.next/bundle.js", 12'000'000);
    auto model = startedModel();
    scanAndWait(*model, path);
    ASSERT_FALSE(model->recommendations().empty());
    auto selection = model->recommendations();
    selection.push_back(Recommendation{.id = "npm"});

    scanAndWait(*model, path, selection);
    EXPECT_EQ(model->selectedIDs(), std::set<std::string>{"next"});
    EXPECT_EQ(model->locationNotice(),
              "Some selected locations changed since the saved map. Review the updated "
              "recommendations before cleaning.");
}

TEST_F(DiskMapModelScanTest, MainThreadKeepsTickingDuringALargeScanAndAStopKeepsThePreview) {
    auto model = startedModel();
    QTimer ticker;
    ticker.setInterval(10);
    auto last = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration longestGap{};
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const auto now = std::chrono::steady_clock::now();
        longestGap = std::max(longestGap, now - last);
        last = now;
    });
    ticker.start();
    // The startup disk: far more than the test waits for, so the scan is still running
    // when it is stopped.
    model->scan("/");
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(waitUntil([&] {
        return model->scanPreview() != nullptr && model->scanProgress().files > 1000 &&
               std::chrono::steady_clock::now() - started > std::chrono::seconds(2);
    }));
    ASSERT_TRUE(model->isScanning());
    model->cancelScan();
    const auto preview = model->scanPreview();
    model->waitForBackgroundTasks();
    QCoreApplication::processEvents();
    EXPECT_EQ(model->scanPreview(), preview);
    EXPECT_TRUE(model->wasScanStopped());
    EXPECT_FALSE(model->snapshot());

    auto panels = std::make_shared<AnsweringPanels>();
    panels->answer = home / "partial.txt";
    model->setFilePanels(panels);
    model->saveSummary();
    ASSERT_TRUE(waitUntil([&] { return exists(*panels->answer); }));
    EXPECT_EQ(panels->reportRequests.back().proposedName, "Veldan - Partial Scan.txt");
    EXPECT_EQ(panels->reportRequests.back().message,
              "This report includes local file paths and incomplete measurements.");
    EXPECT_NE(readFile(*panels->answer).find("Stopped before the scan finished"),
              std::string::npos);
    // Every step of the model on this thread is short; a blocking call here would stall
    // the ticks for the whole walk, two seconds at least.
    EXPECT_LT(longestGap, std::chrono::seconds(1));
    RecordProperty("longestGapMs", static_cast<int>(longestGap / std::chrono::milliseconds(1)));
}

TEST_F(DiskMapModelScanTest, ExploredFolderIsKeptForTheCurrentMapOnly) {
    const std::string path = folder("Explore");
    auto model = startedModel();
    scanAndWait(*model, path);
    model->explore(path + "/inner", "inner");
    EXPECT_TRUE(model->isDoingBackgroundWork());
    ASSERT_TRUE(waitUntil([&] { return model->exploringFolder() != nullptr; }));
    EXPECT_EQ(model->exploringFolder()->node.path, path + "/inner");
    EXPECT_EQ(model->exploredFileCount(), 1);
    model->cancelExploration();

    model->explore(path + "/inner", "inner");
    EXPECT_TRUE(model->exploringFolder());  // at once, from the cache
    scanAndWait(*model, path);
    EXPECT_FALSE(model->exploringFolder());
    model->explore(path + "/inner", "inner");
    EXPECT_FALSE(model->exploringFolder());
    EXPECT_TRUE(model->isExploring());
}

TEST_F(DiskMapModelScanTest, RescannedFolderIsPutInPlaceWithItsParentsTotals) {
    const std::string path = folder("Rescan");
    for (int index = 0; index < 18; ++index) {  // the smallest is folded into "Other"
        const std::string small = path + "/many/f" + std::to_string(index);
        makeFolders(small);
        writeFileOfSize(small + "/x", 4096 * (index + 1));
    }
    auto model = startedModel();
    scanAndWait(*model, path);
    const auto before = model->snapshot();
    writeFileOfSize(path + "/inner/grown.bin", 500'000);

    model->rescanFolder(path + "/inner");
    EXPECT_TRUE(model->isDoingBackgroundWork());
    ASSERT_TRUE(waitUntil([&] { return model->snapshot() != before; }));
    auto inner = [&](const DiskNode& root) {
        auto found =
            std::find_if(root.children.begin(), root.children.end(),
                         [&](const DiskNode& child) { return child.path == path + "/inner"; });
        return found == root.children.end() ? -1 : found->bytes;
    };
    const auto& root = model->snapshot()->root;
    const int64_t grown = allocatedBytes(path + "/inner/grown.bin");
    EXPECT_EQ(root.bytes - before->root.bytes, grown);
    EXPECT_EQ(inner(root) - inner(before->root), grown);
    EXPECT_TRUE(DiskNode::ordersBefore(root.children[0], root.children[1]));
    EXPECT_TRUE(DiskNode::ordersBefore(root.children[1], root.children[2]));
    EXPECT_EQ(model->scanGeneration(), 1);

    model->rescanFolder(path + "/many/f0");
    ASSERT_TRUE(waitUntil([&] { return model->scanError().has_value(); }));
    EXPECT_EQ(model->scanError(),
              "This folder isn\u2019t shown on its own in the map. Scan again to update it.");
    EXPECT_FALSE(model->isDoingBackgroundWork());
}

}  // namespace
}  // namespace veldan::test
