// The saved map seen from the command line: `veldan scan` saves it, a second process shows
// it (`veldan show`) or reports on it (`veldan report --saved`).

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cache/ScanCache.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using test::IsolatedHome;
using test::ProcessResult;
using test::TempDir;

class SavedMapCommandTest : public ::testing::Test {
protected:
    SavedMapCommandTest() {
        test::makeFolders(scope + "/photos/2024");
        test::makeFolders(scope + "/code");
        test::writeFileOfSize(scope + "/photos/2024/a.jpg", 300'000);
        test::writeFileOfSize(scope + "/code/main.cpp", 12'000);
    }

    ProcessResult veldan(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), test::veldanBinary());
        test::ProcessOptions options;
        options.environment = home.environment();
        options.environment["LC_ALL"] = "C.UTF-8";
        return test::runProcess(arguments, options);
    }

    IsolatedHome home;
    TempDir dir;
    std::string scope = dir / "Library";
};

bool isOneSentence(const std::string& text) {
    return !text.empty() && text.back() == '\n' && text.find('\n') == text.size() - 1 &&
           text[text.size() - 2] == '.';
}

TEST_F(SavedMapCommandTest, ShowsInASecondProcessTheMapTheFirstScanned) {
    const auto scanned = veldan({"scan", scope});
    ASSERT_EQ(scanned.exitCode, 0) << scanned.err;
    const auto shown = veldan({"show", scope});
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(shown.out.rfind("Earlier map from ", 0), 0u);
    // The map below the earlier-map line is the one the scan printed.
    const std::string map = shown.out.substr(shown.out.find("\n\n") + 2);
    EXPECT_EQ(map, scanned.out);
    EXPECT_EQ(shown.out.find("scan again"), std::string::npos);
}

TEST_F(SavedMapCommandTest, ShowsTheSameSnapshotAsJsonByteForByte) {
    const std::string odd = dir / "Fotos \xE9t\xE9 \xFF";
    test::makeFolders(odd + "/sub\xFE");
    test::writeFileOfSize(odd + "/sub\xFE/bild\xE4.raw", 80'000);
    const auto scanned = veldan({"scan", "--json", odd});
    ASSERT_EQ(scanned.exitCode, 0) << scanned.err;
    const auto shown = veldan({"show", "--json", odd});
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    // Bytes that are not UTF-8 come out as \udcXX escapes, which JSON parsers refuse to
    // decode; the texts are compared instead.
    const std::string snapshotJson = scanned.out.substr(0, scanned.out.size() - 1);
    EXPECT_EQ(shown.out,
              "{\"earlierMap\":true,\"needsRefresh\":false,\"snapshot\":" + snapshotJson + "}\n");
    EXPECT_NE(shown.out.find("sub\\udcfe"), std::string::npos);
}

TEST_F(SavedMapCommandTest, SaysInOneSentenceWhenThereIsNoSavedMap) {
    const auto shown = veldan({"show", scope});
    EXPECT_EQ(shown.exitCode, 1);
    EXPECT_EQ(shown.out, "");
    EXPECT_TRUE(isOneSentence(shown.err)) << shown.err;
    EXPECT_NE(shown.err.find(scope), std::string::npos);
    const auto missing = veldan({"show", dir / "missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(isOneSentence(missing.err)) << missing.err;
}

TEST_F(SavedMapCommandTest, SavesNothingWithNoCache) {
    ASSERT_EQ(veldan({"scan", "--no-cache", scope}).exitCode, 0);
    EXPECT_FALSE(test::exists(ScanCache().fileFor(scope)));
    EXPECT_EQ(veldan({"show", scope}).exitCode, 1);
}

TEST_F(SavedMapCommandTest, SaysWhenTheSavedMapNeedsARefresh) {
    ASSERT_EQ(veldan({"scan", scope}).exitCode, 0);
    ScanCache().markStale(scope);
    const auto shown = veldan({"show", scope});
    ASSERT_EQ(shown.exitCode, 0);
    EXPECT_NE(
        shown.out.find("Files changed after this map was made; scan again for current sizes.\n"),
        std::string::npos);
    const auto json = nlohmann::json::parse(veldan({"show", "--json", scope}).out);
    EXPECT_EQ(json["needsRefresh"], true);
    // A new scan is later than the mark.
    ASSERT_EQ(veldan({"scan", scope}).exitCode, 0);
    EXPECT_EQ(veldan({"show", scope}).out.find("scan again"), std::string::npos);
}

TEST_F(SavedMapCommandTest, WritesTheReportIntoAFolderUnderItsSuggestedName) {
    test::makeFolders(scope + "/code/node_modules/lib");
    test::writeFileOfSize(scope + "/code/node_modules/lib/index.js", 50'000);
    const auto written = veldan({"report", scope, "-o", dir.path()});
    ASSERT_EQ(written.exitCode, 0) << written.err;
    EXPECT_EQ(written.out, "");
    const std::string file = dir / "Veldan - Scan Summary.txt";
    const std::string report = test::readFile(file);
    EXPECT_EQ(report.rfind("Veldan scan summary\nScope: " + scope + "\n", 0), 0u);
    EXPECT_NE(report.find("\nStatus: Complete\n"), std::string::npos);
    EXPECT_NE(report.find("  " + scope + "/photos\n"), std::string::npos);
    // The recommendations of the scan close the report.
    const std::string recommendations = report.substr(report.find("\n\nRecommendations\n"));
    EXPECT_NE(recommendations.find("\nReview first: "), std::string::npos) << recommendations;
    EXPECT_NE(recommendations.find("; 1 location\n"), std::string::npos) << recommendations;
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);  // a document of the user's, under umask 022

    // The fresh scan was saved too, so the saved map reports the same.
    const auto saved = veldan({"report", "--saved", scope});
    ASSERT_EQ(saved.exitCode, 0) << saved.err;
    EXPECT_NE(saved.out.find("\nStatus: Earlier map, saved "), std::string::npos);
    EXPECT_EQ(saved.out.substr(saved.out.find("Disk space")),
              report.substr(report.find("Disk space")));
}

TEST_F(SavedMapCommandTest, WritesTheReportToANamedFileOrRefusesAMissingFolder) {
    ASSERT_EQ(veldan({"report", scope, "-o", dir / "summary.txt"}).exitCode, 0);
    EXPECT_EQ(test::readFile(dir / "summary.txt").rfind("Veldan scan summary\n", 0), 0u);
    const auto refused = veldan({"report", scope, "-o", dir / "missing/summary.txt"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(isOneSentence(refused.err)) << refused.err;
    EXPECT_FALSE(test::exists(dir / "missing"));
    const auto noSaved = veldan({"report", "--saved", dir / "Library/code"});
    EXPECT_EQ(noSaved.exitCode, 1);
    EXPECT_TRUE(isOneSentence(noSaved.err)) << noSaved.err;
}

// Ctrl-C during the scan still leaves the file asked for, with what was measured (the
// large file of the folder itself is measured before any subfolder); on standard output
// nothing is printed then.
TEST_F(SavedMapCommandTest, WritesThePartialReportWhenTheScanIsStopped) {
    const int big = ::open((scope + "/big.iso").c_str(), O_WRONLY | O_CREAT, 0644);
    ASSERT_EQ(::posix_fallocate(big, 0, 110'000'000), 0);
    ::close(big);
    for (int folder = 0; folder < 40; ++folder) {
        const std::string path = scope + "/bulk/f" + std::to_string(folder);
        test::makeFolders(path);
        for (int file = 0; file < 1500; ++file)
            test::writeFile(path + "/" + std::to_string(file), "");
    }
    test::ProcessOptions options;
    options.environment = home.environment();
    const auto stopped = test::runInTerminal(
        {test::veldanBinary(), "report", scope, "-o", dir.path()}, options, "Scanning");
    EXPECT_EQ(stopped.exitCode, 130) << stopped.out;
    EXPECT_NE(stopped.out.find("Scan stopped before it finished"), std::string::npos)
        << stopped.out;
    const std::string report = test::readFile(dir / "Veldan - Partial Scan.txt");
    EXPECT_EQ(report.rfind("Veldan partial scan summary\nScope: " + scope +
                               "\nStatus: Stopped before the scan finished; all sizes below are "
                               "measured so far.\nMapped so far: ",
                           0),
              0u);
    EXPECT_NE(report.find("\n\nLargest files (100 MB or more)\n"), std::string::npos) << report;
    EXPECT_NE(report.find("  " + scope + "/big.iso\n"), std::string::npos) << report;
    EXPECT_FALSE(test::exists(dir / "Veldan - Scan Summary.txt"));

    const auto toTerminal =
        test::runInTerminal({test::veldanBinary(), "report", scope}, options, "Scanning");
    EXPECT_EQ(toTerminal.exitCode, 130);
    EXPECT_EQ(toTerminal.out.find("Veldan partial scan summary"), std::string::npos);
    EXPECT_NE(toTerminal.out.find("no report was written"), std::string::npos) << toTerminal.out;
}

}  // namespace
}  // namespace veldan
