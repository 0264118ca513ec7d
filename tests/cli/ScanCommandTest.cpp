// The `veldan scan` command, run as a real child process.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

test::ProcessResult veldan(std::vector<std::string> args, test::ProcessOptions options = {}) {
    args.insert(args.begin(), test::veldanBinary());
    return test::runProcess(args, options);
}

// Python reads the JSON the way a script would; surrogateescape gives back raw bytes,
// which must be those of the names given as arguments.
constexpr const char* keysAndNames = R"(
import json, os, sys
d = json.load(sys.stdin)
print(",".join(d.keys()))
print(",".join(d["root"].keys()))
names = sorted(os.fsencode(child["name"]) for child in d["root"]["children"])
print(names == sorted(map(os.fsencode, sys.argv[1:])) or names)
)";

}  // namespace

TEST(ScanCommand, JsonHasTheSnapshotKeysAndEveryNameSurvivesByteForByte) {
    test::TempDir dir;
    const std::vector<std::string> names = {"plain",       "quote\"and\\back",  "new\nline",
                                            "bad\xff\xfe", "\xc3\xa9t\xc3\xa9", "ctl\x01"};
    for (size_t i = 0; i < names.size(); ++i)
        test::writeFileOfSize(dir / names[i], 4096 * (i + 1));
    auto scan = veldan({"scan", "--json", dir.path()});
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    EXPECT_TRUE(scan.err.empty()) << "no progress without a terminal";

    test::ProcessOptions python;
    python.input = scan.out;
    std::vector<std::string> argv = {"python3", "-c", keysAndNames};
    argv.insert(argv.end(), names.begin(), names.end());
    auto parsed = test::runProcess(argv, python);
    ASSERT_EQ(parsed.exitCode, 0) << parsed.err;
    std::istringstream lines(parsed.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line,
              "root,volume,discoveredDirectories,largestFiles,visitedFolderCount,visitedFileCount,"
              "unreadableItems,unreadablePaths,skippedPhotosLibraries,skippedMusicLibraries,"
              "finishedAt");
    std::getline(lines, line);
    EXPECT_EQ(line,
              "path,name,bytes,category,children,isDirectory,isSummary,isPartial,excludedPaths");
    std::getline(lines, line);
    EXPECT_EQ(line, "True") << "the names python read back";
}

TEST(ScanCommand, JsonOfValidNamesParsesStrictlyWithDateAndCategoryTexts) {
    test::TempDir dir;
    test::makeFolders(dir / "node_modules/x");
    test::writeFileOfSize(dir / "node_modules/x/a.js", 9000);
    auto scan = veldan({"scan", "--json", dir.path()});
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    const auto json = nlohmann::json::parse(scan.out);
    EXPECT_EQ(json["root"]["path"], dir.path());
    EXPECT_EQ(json["root"]["children"][0]["category"], "Build output");
    EXPECT_TRUE(json["root"]["children"][0]["children"].empty());
    EXPECT_EQ(json["discoveredDirectories"][dir / "node_modules"], json["root"]["bytes"]);
    EXPECT_EQ(json["finishedAt"].get<std::string>().size(), 20u);  // 2026-11-21T12:39:00Z
    EXPECT_EQ(json["finishedAt"].get<std::string>().back(), 'Z');
    EXPECT_FALSE(json.contains("unreadableReasons"));
}

TEST(ScanCommand, TextShowsTheTreeWithSharesAndEscapesHostileNames) {
    test::TempDir dir;
    test::makeFolders(dir / "big");
    test::writeFileOfSize(dir / "big/data", 3'000'000);
    test::writeFileOfSize(dir / "evil\nname\x1b[31m", 1'000'000);
    auto scan = veldan({"scan", "--depth", "1", dir.path()});
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    EXPECT_NE(scan.out.find("Scope   " + dir.path()), std::string::npos) << scan.out;
    EXPECT_NE(scan.out.find("big"), std::string::npos);
    EXPECT_NE(scan.out.find("75%"), std::string::npos) << scan.out;
    EXPECT_NE(scan.out.find("evil\\nname\\x1B[31m"), std::string::npos) << scan.out;
    EXPECT_EQ(scan.out.find('\x1b'), std::string::npos) << "no raw escape reaches the terminal";
    EXPECT_EQ(scan.out.find("data"), std::string::npos) << "depth 1 stops above big/data";
}

TEST(ScanCommand, UnusablePathsAndBadArgumentsHaveTheirOwnExitStatus) {
    test::TempDir dir;
    test::writeFile(dir / "file", "x");
    auto missing = veldan({"scan", dir / "missing"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 1) << missing.err;
    EXPECT_NE(missing.err.find("Nothing exists at"), std::string::npos);
    auto file = veldan({"scan", dir / "file"});
    EXPECT_EQ(file.exitCode, 1);
    EXPECT_NE(file.err.find("is not a folder"), std::string::npos);
    EXPECT_EQ(veldan({"scan", "--no-such-option", dir.path()}).exitCode, 2);
    EXPECT_EQ(veldan({"scan", "--depth", "-1", dir.path()}).exitCode, 2);
    EXPECT_EQ(veldan({}).exitCode, 2);
}

TEST(ScanCommand, UnreadableFoldersAreReportedAsAccessDeniedAndTheRestIsMeasured) {
    test::TempDir dir;
    test::makeFolders(dir / "open");
    test::writeFileOfSize(dir / "open/readable", 40'000);
    test::makeFolders(dir / "closed/inner");
    test::writeFileOfSize(dir / "closed/inner/secret", 40'000);
    ASSERT_EQ(::chmod((dir / "closed").c_str(), 0700), 0);
    test::ProcessOptions options;
    options.workingFolder = "/";
    auto scan = test::runProcess(
        test::asNobody({test::veldanBinary(), "scan", "--json", dir.path()}), options);
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    const auto json = nlohmann::json::parse(scan.out);
    EXPECT_EQ(json["unreadableItems"], 1);
    EXPECT_EQ(json["unreadableReasons"][dir / "closed"], "Access denied");
    EXPECT_EQ(json["root"]["bytes"], test::allocatedBytes(dir / "open/readable"));

    auto text =
        test::runProcess(test::asNobody({test::veldanBinary(), "scan", dir.path()}), options);
    EXPECT_NE(text.out.find("Could not read 1 item"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find(dir / "closed" + " \u2014 Access denied"), std::string::npos)
        << text.out;
}

TEST(ScanCommand, TheSameFolderReachedTwiceThroughABindMountIsCountedOnce) {
    test::TempDir dir;
    test::makeFolders(dir / "root/data");
    test::makeFolders(dir / "root/mirror");
    test::writeFileOfSize(dir / "root/data/file", 500'000);
    const std::string script = "mount --bind '" + dir / "root/data" + "' '" + dir / "root/mirror" +
                               "' || exit 77; exec '" + test::veldanBinary() + "' scan --json '" +
                               dir / "root" + "'";
    auto scan = test::runProcess({"unshare", "-m", "--propagation", "private", "sh", "-c", script});
    if (scan.exitCode == 77 || scan.err.find("unshare failed") != std::string::npos) {
        GTEST_SKIP() << "mount namespaces are not available here: " << scan.err;
    }
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    const auto json = nlohmann::json::parse(scan.out);
    EXPECT_EQ(json["root"]["bytes"], test::allocatedBytes(dir / "root/data/file"));
}

TEST(ScanCommand, CtrlCStopsTheScanWithStatus130AndProgressShowsOnATerminal) {
    test::TempDir dir;
    for (int folder = 0; folder < 40; ++folder) {
        const std::string path = dir / ("f" + std::to_string(folder));
        test::makeFolders(path);
        for (int i = 0; i < 1500; ++i)
            test::writeFile(path + "/" + std::to_string(i), "");
    }
    test::ProcessOptions options;
    auto stopped =
        test::runInTerminal({test::veldanBinary(), "scan", dir.path()}, options, "Scanning");
    EXPECT_EQ(stopped.exitCode, 130) << stopped.out;
    EXPECT_NE(stopped.out.find("Scan stopped"), std::string::npos) << stopped.out;
    const auto status = veldan({"status", "--json"});
    const auto digest = nlohmann::json::parse(status.out);
    EXPECT_EQ(digest["scanState"], "stopped") << "quitting never leaves a scan running";
    EXPECT_EQ(digest["activeScanScopeName"], std::filesystem::path(dir.path()).filename().string());

    auto finished = test::runInTerminal({test::veldanBinary(), "scan", dir.path()}, options);
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_NE(finished.out.find("Scanning"), std::string::npos) << "progress on a terminal";
    EXPECT_EQ(finished.out.find("\x1b[1m"), std::string::npos) << "NO_COLOR is set for tests";
    options.environment["NO_COLOR"] = "";
    auto colored = test::runInTerminal({test::veldanBinary(), "scan", dir.path()}, options);
    EXPECT_NE(colored.out.find("\x1b[1m"), std::string::npos);
}

}  // namespace veldan
