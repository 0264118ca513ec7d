#pragma once
// What the application model's tests share: a QCoreApplication for the whole binary (set
// up after the test main has pointed HOME into a temporary folder), waiting on the event
// loop, and a model that has finished starting.

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "app/DiskMapModel.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan::test {

// A test of a model in a home folder of its own.
class ModelTest : public ::testing::Test {
protected:
    // Saved maps, the history and the digest are written on queues of their own: they
    // must land before the home folder goes.
    void TearDown() override;
    // A folder of a few small files under the home folder.
    std::string folder(const std::string& name);

    IsolatedHome home;
};

// Runs the event loop until `condition` holds; false when `limit` passed first. The limit
// only stops a broken test from hanging: conditions are met by events, never by time.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(60));

// A model started with `arguments` after the program name, once its startup is done.
std::unique_ptr<DiskMapModel> startedModel(std::vector<std::string> arguments = {},
                                           DiskMapModelSeams seams = {});

// Starts a scan of `path` and waits until it has finished or was refused.
void scanAndWait(DiskMapModel& model, const std::string& path,
                 std::optional<std::vector<Recommendation>> preservingSelection = std::nullopt);

}  // namespace veldan::test

namespace veldan::test {

// File panels that answer with a path set by the test, at once or when the test says.
class AnsweringPanels : public FilePanels {
public:
    std::optional<std::string> answer;
    bool holdAnswers = false;  // keep the panel "open" until answerHeld()
    std::vector<ReportSaveRequest> reportRequests;
    int folderRequests = 0;

    void chooseFolderToScan(Answer done) override;
    void chooseReportDestination(const ReportSaveRequest& request, Answer done) override;
    void answerHeld();

private:
    std::vector<Answer> held_;
};

}  // namespace veldan::test
