// The `veldan scan` command, run as a real child process.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
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

// A bind mount shows the same folder again; a tmpfs is another file system. Neither adds
// to the map, and the scan does not stop at them.
TEST(ScanCommand, MountsInsideTheTreeAreNeitherEnteredNorCountedTwice) {
    test::TempDir dir;
    test::makeFolders(dir / "root/data");
    test::makeFolders(dir / "root/mirror");
    test::makeFolders(dir / "root/other");
    test::writeFileOfSize(dir / "root/data/file", 500'000);
    const std::string script = "mount --bind '" + dir / "root/data" + "' '" + dir / "root/mirror" +
                               "' && mount -t tmpfs tmpfs '" + dir / "root/other" +
                               "' && head -c 300000 /dev/zero > '" + dir / "root/other/big" +
                               "' || exit 77; exec '" + test::veldanBinary() + "' scan --json '" +
                               dir / "root" + "'";
    auto scan = test::runProcess({"unshare", "-m", "--propagation", "private", "sh", "-c", script});
    if (scan.exitCode == 77 || scan.err.find("unshare failed") != std::string::npos) {
        GTEST_SKIP() << "mount namespaces are not available here: " << scan.err;
    }
    ASSERT_EQ(scan.exitCode, 0) << scan.err;
    const auto json = nlohmann::json::parse(scan.out);
    EXPECT_EQ(json["root"]["bytes"], test::allocatedBytes(dir / "root/data/file"));
    EXPECT_EQ(json["unreadableItems"], 0);
    for (const auto& child : json["root"]["children"])
        EXPECT_NE(child["name"], "other") << "the tmpfs is not part of this folder's disk";
}

// With few descriptors left, folders are opened again by name instead of being dropped.
TEST(ScanCommand, ALowLimitOnOpenFilesStillMeasuresEverything) {
    test::TempDir dir;
    for (const char* top : {"a", "b", "c", "d", "e"}) {
        std::string folder = dir / top;
        for (int level = 0; level < 30; ++level) {
            folder += "/l" + std::to_string(level);
            test::makeFolders(folder);
            test::writeFileOfSize(folder + "/f", 5000);
        }
    }
    auto unlimited = veldan({"scan", "--json", "--no-cache", dir.path()});
    auto limited = test::runProcess({"prlimit", "--nofile=12:12", test::veldanBinary(), "scan",
                                     "--json", "--no-cache", dir.path()});
    ASSERT_EQ(limited.exitCode, 0) << limited.err;
    const auto expected = nlohmann::json::parse(unlimited.out);
    const auto json = nlohmann::json::parse(limited.out);
    EXPECT_EQ(json["unreadableItems"], 0) << json["unreadableReasons"];
    EXPECT_EQ(json["root"]["bytes"], expected["root"]["bytes"]);
    EXPECT_EQ(json["visitedFolderCount"], 156);
}

// `veldan scan | head -1`: the reader leaves early, the map is saved all the same and no
// temporary file stays behind; the command then ends as a pipeline expects (SIGPIPE).
TEST(ScanCommand, AReaderThatStopsEarlyNeverCostsTheSavedMap) {
    test::TempDir dir;
    for (int folder = 0; folder < 150; ++folder) {
        const std::string path = dir / ("folder-with-a-rather-long-name-" + std::to_string(folder));
        test::makeFolders(path);
        for (int file = 0; file < 17; ++file)
            test::writeFile(path + "/file-with-a-rather-long-name-" + std::to_string(file), "x");
    }
    test::IsolatedHome home;
    test::ProcessOptions options;
    options.environment = home.environment();
    const auto piped = test::runProcess(
        {"bash", "-c",
         "env --default-signal=PIPE \"$0\" scan --json \"$1\" | head -c 1 >/dev/null; "
         "echo \"${PIPESTATUS[0]}\"",
         test::veldanBinary(), dir.path()},
        options);
    EXPECT_EQ(piped.out, "141\n") << piped.err;
    EXPECT_EQ(piped.err, "");
    const auto shown =
        test::runProcess({test::veldanBinary(), "show", "--json", dir.path()}, options);
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    EXPECT_EQ(nlohmann::json::parse(shown.out)["snapshot"]["visitedFileCount"], 150 * 17);
    const auto saved = test::runProcess({"ls", "-A", home.cacheHome() + "/Veldan/Scans"});
    EXPECT_EQ(saved.out.find(".tmp"), std::string::npos) << saved.out;
}

// A folder named through a symbolic link keeps that name, with the resolved path beside it.
TEST(ScanCommand, AFolderNamedThroughALinkKeepsItsName) {
    test::TempDir dir;
    test::makeFolders(dir / "real/inner");
    test::writeFileOfSize(dir / "real/inner/data", 40'000);
    test::makeSymlink(dir / "real", dir / "link");
    test::IsolatedHome home;
    test::ProcessOptions options;
    options.environment = home.environment();
    const auto text = test::runProcess({test::veldanBinary(), "scan", dir / "link"}, options);
    ASSERT_EQ(text.exitCode, 0) << text.err;
    EXPECT_NE(text.out.find("Scope   " + dir / "link" + " \u2192 " + dir / "real\n"),
              std::string::npos)
        << text.out;
    const auto shown =
        test::runProcess({test::veldanBinary(), "show", "--json", dir / "link"}, options);
    ASSERT_EQ(shown.exitCode, 0) << shown.err;
    const auto json = nlohmann::json::parse(shown.out)["snapshot"];
    EXPECT_EQ(json["root"]["path"], dir / "link");
    EXPECT_EQ(json["root"]["children"][0]["path"], dir / "link/inner");
    const auto report =
        test::runProcess({test::veldanBinary(), "report", "--saved", dir / "link"}, options);
    EXPECT_NE(report.out.find("\nScope: " + dir / "link" + "\n"), std::string::npos) << report.out;
    EXPECT_NE(
        test::runProcess({test::veldanBinary(), "recommend", "--saved", dir / "link"}, options)
            .exitCode,
        1);
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
