// Choosing a folder through the panel, and saving the report of the map: the proposed names and
// messages, a map replaced while the panel is open, and a write that fails.

#include <gtest/gtest.h>

#include "tests/app/AppTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan::test {
namespace {

using DiskMapModelReportTest = ModelTest;

TEST_F(DiskMapModelReportTest, SummaryGoesWhereThePanelSaysUnlessTheMapChangedMeanwhile) {
    const std::string mapped = home / "Mapped";
    makeFolders(mapped);
    writeFileOfSize(mapped + "/a.bin", 30'000);
    makeFolders(home / "Reports");
    auto panels = std::make_shared<AnsweringPanels>();
    auto model = startedModel();
    model->setFilePanels(panels);
    model->saveSummary();  // nothing to report yet
    EXPECT_TRUE(panels->reportRequests.empty());

    panels->answer = mapped;
    model->chooseFolder();
    ASSERT_TRUE(waitUntil([&] { return model->snapshot() != nullptr; }));
    EXPECT_EQ(panels->folderRequests, 1);
    EXPECT_EQ(model->summaryKind(), DiskMapModel::SummaryKind::summary);
    panels->answer = home / "Reports/summary.txt";
    model->saveSummary();
    ASSERT_TRUE(waitUntil([&] { return exists(*panels->answer); }));
    EXPECT_EQ(panels->reportRequests.back().proposedName, "Veldan - Scan Summary.txt");
    EXPECT_EQ(panels->reportRequests.back().message, "This report includes local file paths.");
    EXPECT_EQ(panels->reportRequests.back().prompt, "Save Report");
    EXPECT_NE(readFile(*panels->answer).find("Scope: " + mapped + "\n"), std::string::npos);

    panels->answer = home / "Reports/missing-folder/summary.txt";
    model->saveSummary();
    ASSERT_TRUE(waitUntil([&] { return model->scanError().has_value(); }));
    EXPECT_EQ(model->scanError()->rfind("Could not save the report: ", 0), 0u);
    EXPECT_EQ(model->scanError()->back(), '.');

    panels->holdAnswers = true;
    panels->answer = home / "Reports/late.txt";
    model->saveSummary();
    scanAndWait(*model, mapped);
    panels->answerHeld();
    EXPECT_EQ(model->scanError(),
              "The map changed while choosing a report destination. Save it again.");
    model->waitForBackgroundTasks();
    EXPECT_FALSE(exists(*panels->answer));
}

}  // namespace
}  // namespace veldan::test
