#include "tests/app/AppTestSupport.hpp"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>

#include "app/CleanupAftermath.hpp"
#include "cache/ScanCache.hpp"
#include "tests/support/Files.hpp"

namespace veldan::test {

namespace {

class QtApplication : public ::testing::Environment {
public:
    void SetUp() override { application_ = std::make_unique<QCoreApplication>(argc_, argv_); }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[16] = "veldan-app-test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QCoreApplication> application_;
};

[[maybe_unused]] auto* const environment = ::testing::AddGlobalTestEnvironment(new QtApplication);

}  // namespace

void ModelTest::TearDown() {
    ScanCache::shared().drain();
    CleanupAftermath::finishWriting();
}

std::string ModelTest::folder(const std::string& name) {
    const std::string path = home / name;
    makeFolders(path + "/inner");
    writeFileOfSize(path + "/a.bin", 40'000);
    writeFileOfSize(path + "/inner/b.bin", 20'000);
    return path;
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

std::unique_ptr<DiskMapModel> startedModel(std::vector<std::string> arguments,
                                           DiskMapModelSeams seams) {
    DiskMapModelOptions options;
    options.arguments = {"veldan-app"};
    options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
    options.seams = std::move(seams);
    auto model = std::make_unique<DiskMapModel>(std::move(options));
    bool started = false;
    QObject::connect(model.get(), &DiskMapModel::started, [&] { started = true; });
    EXPECT_TRUE(waitUntil([&] { return started; }));
    return model;
}

void scanAndWait(DiskMapModel& model, const std::string& path,
                 std::optional<std::vector<Recommendation>> preservingSelection) {
    const int64_t generation = model.scanGeneration();
    bool refused = false;
    auto connection = QObject::connect(&model, &DiskMapModel::scanErrorChanged,
                                       [&] { refused = model.scanError().has_value(); });
    model.scan(path, std::move(preservingSelection));
    EXPECT_TRUE(waitUntil(
        [&] { return refused || (model.scanGeneration() > generation && !model.isScanning()); }));
    QObject::disconnect(connection);
}

}  // namespace veldan::test

namespace veldan::test {

void AnsweringPanels::chooseFolderToScan(Answer done) {
    ++folderRequests;
    holdAnswers ? held_.push_back(std::move(done)) : done(answer);
}

void AnsweringPanels::chooseReportDestination(const ReportSaveRequest& request, Answer done) {
    reportRequests.push_back(request);
    holdAnswers ? held_.push_back(std::move(done)) : done(answer);
}

void AnsweringPanels::answerHeld() {
    for (auto& done : std::exchange(held_, {}))
        done(answer);
}

}  // namespace veldan::test
