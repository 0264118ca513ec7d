// The model's cleanup flows on real files and a real Trash: the recommendation cleanup and
// the duplicate move, the refusals of a scan start while they run, and the duplicate
// selection rules the window relies on.

#include <gtest/gtest.h>

#include <future>
#include <set>

#include "activity/ActivityTracker.hpp"
#include "activity/DownloadInventory.hpp"
#include "platform/Preferences.hpp"
#include "tests/app/AppTestSupport.hpp"
#include "tests/support/Files.hpp"

namespace veldan::test {
namespace {

class DiskMapModelCleanupTest : public ModelTest {
protected:
    // A project with a generated ".next" folder and a file copied twice more.
    std::string project() {
        const std::string path = folder("Web");
        makeFolders(path + "/site/.next");
        writeFile(path + "/site/package.json", "{}");
        writeFileOfSize(path + "/site/.next/bundle.js", 12'000'000);
        for (const char* copy : {"/movie.mp4", "/inner/movie.mp4", "/inner/movie copy.mp4"}) {
            writeFileOfSize(path + copy, 2'000'000, 7);
        }
        return path;
    }

    void findDuplicates(DiskMapModel& model) {
        model.findDuplicates();
        ASSERT_TRUE(model.isFindingDuplicates());
        ASSERT_TRUE(waitUntil([&] { return !model.isFindingDuplicates(); }));
        ASSERT_TRUE(model.duplicateResult());
        ASSERT_EQ(model.duplicateResult()->groups.size(), 1u);
    }
};

TEST_F(DiskMapModelCleanupTest, ScanStartsAreRefusedWhileFilesMoveDuplicatesFirst) {
    const std::string path = project();
    std::promise<void> cleanupHeld, moveHeld;
    auto cleanupRelease = cleanupHeld.get_future().share();
    auto moveRelease = moveHeld.get_future().share();
    DiskMapModelSeams seams;
    seams.beforeCleanup = [&] { cleanupRelease.wait(); };
    seams.beforeDuplicateMove = [&] { moveRelease.wait(); };
    auto model = startedModel({}, seams);
    scanAndWait(*model, path);
    findDuplicates(*model);
    model->selectAllSafe();
    ASSERT_EQ(model->selectedIDs(), std::set<std::string>{"next"});
    model->smartSelectAllDuplicates();
    ASSERT_EQ(model->selectedDuplicatePaths().size(), 2u);
    EXPECT_FALSE(model->canSelectDuplicate(path + "/movie.mp4"));  // the last copy left
    model->setDuplicateSelected(path + "/movie.mp4", true);
    ASSERT_EQ(model->selectedDuplicatePaths().size(), 2u);

    const int64_t itemsBefore = ActivityTracker::shared().history().totalMovedToTrashItems;
    model->startCleanup();
    model->moveSelectedDuplicatesToTrash();
    ASSERT_TRUE(model->isCleaning() && model->isMovingDuplicates());
    EXPECT_EQ(model->cleanupTotal(), 1);
    EXPECT_EQ(model->duplicateTrashTotal(), 2);
    const auto map = model->snapshot();
    model->scan(path);
    EXPECT_EQ(model->scanError(),
              "Finish moving duplicate files to Trash before starting another scan.");
    moveHeld.set_value();
    ASSERT_TRUE(waitUntil([&] { return !model->isMovingDuplicates(); }));
    model->scan(path);
    EXPECT_EQ(model->scanError(), "Finish the selected cleanup before starting another scan.");
    EXPECT_EQ(model->snapshot(), map);
    EXPECT_EQ(model->scanGeneration(), 1);

    cleanupHeld.set_value();
    ASSERT_TRUE(waitUntil([&] { return !model->isCleaning() && model->mapNeedsRefresh(); }));
    ASSERT_TRUE(model->cleanupReport());
    EXPECT_EQ(model->cleanupReport()->succeededCount(), 1);
    EXPECT_EQ(model->cleanupProgress(), 1);
    EXPECT_FALSE(exists(path + "/site/.next"));
    EXPECT_TRUE(exists(home.dataHome() + "/Trash/files/.next"));
    EXPECT_TRUE(model->selectedIDs().empty());

    const auto& report = *model->duplicateTrashReport();
    EXPECT_EQ(report.title(), "Copies moved to Trash");
    EXPECT_EQ(report.movedCount(), 2);
    EXPECT_EQ(report.logicalBytesMoved, 4'000'000);
    EXPECT_TRUE(model->duplicateResult()->groups.empty());  // one copy left: no longer a group
    EXPECT_TRUE(model->duplicateNeedsRefresh());
    EXPECT_TRUE(model->selectedDuplicatePaths().empty());
    int copiesLeft = 0;
    for (const char* copy : {"/movie.mp4", "/inner/movie.mp4", "/inner/movie copy.mp4"}) {
        copiesLeft += exists(path + copy) ? 1 : 0;
    }
    EXPECT_EQ(copiesLeft, 1);
    EXPECT_FALSE(model->isDoingBackgroundWork());
    // Both moves are in the history: the generated folder and the two copies.
    const auto history = ActivityTracker::shared().history();
    EXPECT_EQ(history.totalMovedToTrashItems - itemsBefore, 3);
    ASSERT_GE(history.activities.size(), 2u);
    std::set<std::string> titles{history.activities[0].title, history.activities[1].title};
    EXPECT_EQ(titles.count("Duplicate copies"), 1u);

    scanAndWait(*model, path);
    EXPECT_EQ(model->scanGeneration(), 2);
    EXPECT_FALSE(model->duplicateResult());
}

TEST_F(DiskMapModelCleanupTest, DuplicateSelectionAlwaysLeavesACopyAndSurvivesTheFilter) {
    const std::string path = project();
    writeFileOfSize(path + "/.hidden-movie.mp4", 2'000'000, 7);
    auto model = startedModel();
    scanAndWait(*model, path);
    findDuplicates(*model);
    const auto& group = model->duplicateResult()->groups.front();
    ASSERT_EQ(group.files.size(), 4u);
    EXPECT_FALSE(model->canSelectDuplicate(path + "/.hidden-movie.mp4"));

    model->keepDuplicateCopy(group.id, path + "/inner/movie copy.mp4");
    const DuplicatePathSet keptCopy{path + "/inner/movie.mp4", path + "/movie.mp4"};
    EXPECT_EQ(model->selectedDuplicatePaths(), keptCopy);

    EXPECT_TRUE(model->visibleDuplicateGroups("no such name", 0).empty());
    EXPECT_EQ(model->duplicatesSelectedOutsideFilter(), 2);
    model->smartSelectShownDuplicates("no such name", 0);
    EXPECT_EQ(model->selectedDuplicatePaths(), keptCopy);

    model->clearDuplicateGroupSelection(group.id);
    EXPECT_TRUE(model->selectedDuplicatePaths().empty());
    model->smartSelectShownDuplicates("MOVIE", 0);  // the hidden copy stays: it is the keeper
    EXPECT_EQ(model->selectedDuplicatePaths(),
              (DuplicatePathSet{path + "/inner/movie copy.mp4", path + "/inner/movie.mp4",
                                path + "/movie.mp4"}));
}

TEST_F(DiskMapModelCleanupTest, DownloadMovedFromTheActivityScreenOutdatesTheMap) {
    makeFolders(home / "Downloads");
    writeFileOfSize(home / "Downloads/setup.deb", 50'000);
    auto model = startedModel();
    model->setDailyTrackingEnabled(true);
    EXPECT_TRUE(waitUntil(
        [] { return platform::Preferences::boolean("veldanDailyTrackingEnabled") == true; }));

    // A new account: the program's own first writes must not count as a change of home.
    scanAndWait(*model, home.home());
    const auto downloads = DownloadInventory::collect(std::chrono::system_clock::now());
    ASSERT_EQ(downloads.size(), 1u);
    model->moveDownloadToTrash(downloads.front());
    ASSERT_TRUE(waitUntil([&] { return model->mapNeedsRefresh(); }));
    EXPECT_FALSE(exists(home / "Downloads/setup.deb"));
    EXPECT_TRUE(exists(home.dataHome() + "/Trash/files/setup.deb"));
}

}  // namespace
}  // namespace veldan::test
