// Package tools' own cleanups, run as real child processes: fake npm, uv, go and pnpm
// scripts in a temporary search path answer the way real tools (and broken ones) do.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <regex>

#include "recommendations/CleanupExecutor.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "recommendations/ToolSearchPath.hpp"
#include "tests/recommendations/FakeTools.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

using namespace std::chrono_literals;

class ToolCleanup : public ::testing::Test {
protected:
    test::IsolatedHome home;
    test::TempDir tools;
    test::TempDir temporary;
    test::ScopedEnvironment environment;
    std::vector<std::vector<std::string>> reported;

    std::string utilities;

    void SetUp() override {
        environment.set("TMPDIR", temporary.path());
        utilities = test::systemUtilities(tools, {"cat", "mv", "ln", "readlink", "sleep"});
    }

    std::string log() const { return tools / "log"; }
    std::string logged() const { return test::exists(log()) ? test::readFile(log()) : ""; }

    // A fake tool: `answer` runs for the locate command (its arguments are `locate`),
    // anything else is logged with the PATH it saw and runs `cleanup`.
    void tool(const std::string& name, const std::string& locate, const std::string& answer,
              const std::string& cleanup = "") {
        test::writeScript(tools / name, "if [ \"$*\" = '" + locate + "' ]; then\n" + answer +
                                            "\nexit\nfi\necho \"" + name + " $* PATH=$PATH\" >> '" +
                                            log() + "'\n" + cleanup + "\n");
    }

    std::string ran(const std::string& command) {
        return command + " PATH=" + ToolSearchPath::joined(settings().searchPath) + "\n";
    }

    Recommendation built(const std::string& id, const std::string& relative) {
        test::makeFolders(home / relative);
        ScanSnapshot snapshot;
        snapshot.discoveredDirectories[home / relative] = 20'000'000;
        for (auto& recommendation : RecommendationBuilder::build(home.home(), snapshot)) {
            if (recommendation.id == id) return recommendation;
        }
        throw std::runtime_error("no recommendation " + id);
    }

    CleanupExecutorSettings settings() {
        CleanupExecutorSettings settings;
        settings.home = home.home();
        settings.searchPath = {tools / "missing", tools.path(), utilities};
        settings.changedPaths = [this](const std::vector<std::string>& paths) {
            reported.push_back(paths);
        };
        return settings;
    }

    CleanupItemResult run(const Recommendation& recommendation) {
        return CleanupExecutor(settings()).runOne(recommendation);
    }
};

}  // namespace

TEST_F(ToolCleanup, RunsTheCleanupWhenTheToolReportsTheMeasuredCache) {
    const auto npm = built("npm", ".npm/_cacache");
    tool("npm", "config get cache", "echo '" + home / ".npm" + "'");
    const auto result = run(npm);
    EXPECT_TRUE(result.succeeded) << result.detail;
    EXPECT_EQ(result.detail,
              "npm finished its cache cleanup. Space saved may be less than the scanned size.");
    EXPECT_EQ(result.totalFolders, 0);
    EXPECT_EQ(logged(), "npm cache clean --force PATH=" + tools / "missing:" + tools.path() + ":" +
                            utilities + "\n");
    EXPECT_EQ(reported, std::vector<std::vector<std::string>>{npm.paths});
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path())) << "the output file is removed";
    EXPECT_EQ(CleanupReport{.results = {result}}.completedToolCount(), 1);
}

TEST_F(ToolCleanup, WritesTheToolOutputToAVeldanToolFileInTheTemporaryFolder) {
    const auto uv = built("uv", ".cache/uv");
    tool(
        "uv", "cache dir",
        "readlink /proc/self/fd/2 > '" + tools / "target" + "'; echo '" + home / ".cache/uv" + "'");
    const auto result = run(uv);
    EXPECT_TRUE(result.succeeded) << result.detail;
    EXPECT_EQ(logged(), ran("uv cache prune"));
    const std::string target = test::readFile(tools / "target");
    EXPECT_TRUE(std::regex_search(
        target, std::regex("^" + temporary.path() +
                           "/veldan-tool-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                           "[0-9A-F]{12} \\(deleted\\)\n$")))
        << target;
}

TEST_F(ToolCleanup, ACacheElsewhereRunsNothing) {
    const auto npm = built("npm", ".npm/_cacache");
    tool("npm", "config get cache", "echo /srv/other-cache/");
    const auto result = run(npm);
    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.detail,
              "The active npm cache is at /srv/other-cache, outside the location Veldan measured.");
    EXPECT_EQ(logged(), "");
    EXPECT_TRUE(reported.empty());
}

TEST_F(ToolCleanup, TwoLinesBlankOrOver4096BytesAreNotACacheLocation) {
    const auto uv = built("uv", ".cache/uv");
    tool("uv", "cache dir", "printf '%s\\n%s\\n' '" + home / ".cache/uv" + "' extra");
    EXPECT_EQ(run(uv).detail, "uv returned an unexpected cache location.");
    tool("uv", "cache dir", "printf '  \\n'");
    EXPECT_EQ(run(uv).detail, "uv returned an unexpected cache location.");

    const auto go = built("go", "go/pkg/mod");
    const std::string path = home / "go/pkg/mod";
    // The measured path padded with spaces to `bytes` in all, the line break included.
    auto padded = [&](size_t bytes) {
        return "printf '%s%" + std::to_string(bytes - path.size() - 1) + "s\\n' '" + path + "' ''";
    };
    tool("go", "env GOMODCACHE", padded(4097));
    EXPECT_EQ(run(go).detail, "go returned an unexpected cache location.");
    EXPECT_EQ(logged(), "");
    tool("go", "env GOMODCACHE", padded(4096));
    EXPECT_TRUE(run(go).succeeded) << "trailing space within the limit is trimmed";
    EXPECT_EQ(logged(), ran("go clean -modcache"));

    // The limit comes before the exit status: a failing answer that long is no location
    // either, and its output is not shown.
    tool("go", "env GOMODCACHE", "printf '%4097s' ''\nexit 3");
    EXPECT_EQ(run(go).detail, "go returned an unexpected cache location.");
}

TEST_F(ToolCleanup, ANonZeroExitOrASignalGivesTheStatusAndTheOutputTail) {
    const auto uv = built("uv", ".cache/uv");
    tool("uv", "cache dir", "echo 'uv: crashed' >&2\nkill -USR1 $$\nsleep 5");
    EXPECT_EQ(run(uv).detail, "uv exited with status " + std::to_string(SIGUSR1) + ". uv: crashed");

    const auto go = built("go", "go/pkg/mod");
    tool("go", "env GOMODCACHE", "echo 'go: cannot find GOROOT' >&2\nexit 2");
    EXPECT_EQ(run(go).detail, "go exited with status 2. go: cannot find GOROOT")
        << "the tool's own words, without a full stop added";

    // A failing locate command's answer is at most 4096 bytes and is shown whole.
    const std::string words = "go: " + std::string(1000, 'y');
    tool("go", "env GOMODCACHE", "printf '%s\\n' '" + words + "'\nexit 2");
    EXPECT_EQ(run(go).detail, "go exited with status 2. " + words);

    // The cleanup fails after a long output: only the last 600 bytes are kept.
    std::string longLine(1500, 'x');
    tool("go", "env GOMODCACHE", "echo '" + home / "go/pkg/mod" + "'",
         "printf '%s\\n' '" + longLine + "'\nprintf 'permission\\n  denied!\\n'\nexit 1");
    const auto result = run(go);
    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.detail, "go exited with status 1. " + std::string(578, 'x') +
                                 " permission denied! It may have cleaned some entries; scan "
                                 "again to see what remains.");
    EXPECT_EQ(reported.size(), 1u) << "a cleanup that ran may have changed the cache";
}

TEST_F(ToolCleanup, AToolThatIgnoresTerminateIsKilledAfterTheGrace) {
    const auto uv = built("uv", ".cache/uv");
    tool("uv", "cache dir", "trap '' TERM\nsleep 30\n");
    auto configured = settings();
    configured.toolTimeLimit = 300ms;
    configured.toolGrace = 300ms;
    const auto start = std::chrono::steady_clock::now();
    const auto result = CleanupExecutor(configured).runOne(uv);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_EQ(result.detail,
              "uv exceeded three minutes, so Veldan ended its command. Any subprocesses may still "
              "be finishing; scan again before attempting another cleanup.");
}

TEST_F(ToolCleanup, AMissingToolLeavesTheOtherItemsCleanable) {
    const auto npm = built("npm", ".npm/_cacache");
    EXPECT_EQ(run(npm).detail,
              "npm is unavailable. The other selected items can still be cleaned.");
    // A folder or a file without execute permission is not the tool.
    test::makeFolders(tools / "npm");
    EXPECT_EQ(run(npm).detail,
              "npm is unavailable. The other selected items can still be cleaned.");
}

TEST_F(ToolCleanup, AMeasuredCacheThatChangedRunsNothing) {
    const auto npm = built("npm", ".npm/_cacache");
    tool("npm", "config get cache", "echo '" + home / ".npm" + "'");
    ::rename((home / ".npm/_cacache").c_str(), (home / ".npm/old").c_str());
    test::makeFolders(home / ".npm/_cacache");
    EXPECT_EQ(run(npm).detail, "The measured cache folder changed since the scan: " +
                                   home / ".npm/_cacache" + ". Scan again before cleaning.");
    EXPECT_EQ(logged(), "");

    auto moved = built("npm", ".npm/_cacache");
    test::makeFolders(home / "elsewhere/_cacache");
    moved.paths = {home / "elsewhere/_cacache"};
    moved.folderIdentities = RecommendationBuilder::folderIdentities(moved.paths);
    EXPECT_EQ(run(moved).detail,
              "The scanned cache location no longer matches the expected npm cache.");
    EXPECT_EQ(logged(), "");
}

TEST_F(ToolCleanup, ACacheReachedThroughALinkRunsNothing) {
    const auto npm = built("npm", ".npm/_cacache");
    // Between the checks of the measured folder and the answer, ~/.npm becomes a link.
    tool("npm", "config get cache",
         "mv '" + home / ".npm" + "' '" + home / ".npm-real" + "'\nln -s .npm-real '" +
             home / ".npm" + "'\necho '" + home / ".npm" + "'");
    EXPECT_EQ(run(npm).detail,
              "The npm cache path now points through a symbolic link. Scan again before cleaning.");
    EXPECT_EQ(logged(), "");
}

TEST_F(ToolCleanup, APnpmStoreInsideAMeasuredStoreIsPruned) {
    const auto pnpm = built("pnpm", "Library/pnpm/store");
    test::makeFolders(home / "Library/pnpm/store/v3");
    tool("pnpm", "store path", "cat '" + tools / "answer" + "'");
    test::writeFile(tools / "answer", home / "Library/pnpm/store/v3\n");
    const auto result = run(pnpm);
    EXPECT_TRUE(result.succeeded) << result.detail;
    EXPECT_EQ(result.detail,
              "pnpm pruned unreferenced packages. Space saved may be less than the scanned size.");
    EXPECT_EQ(logged(), ran("pnpm store prune"));

    test::writeFile(tools / "answer", home / "Library/pnpm/store-other\n");
    EXPECT_EQ(run(pnpm).detail, "The active pnpm store is outside the location Veldan measured.");

    test::makeFolders(home / "real-store");
    test::makeSymlink(home / "real-store", home / "Library/pnpm/store/v4");
    test::writeFile(tools / "answer", home / "Library/pnpm/store/v4\n");
    EXPECT_EQ(run(pnpm).detail,
              "The active pnpm store now points through a symbolic link. Scan again before "
              "cleaning.");
    EXPECT_EQ(logged(), ran("pnpm store prune")) << "pruned only the first time";

    auto none = pnpm;
    none.paths.clear();
    EXPECT_EQ(run(none).detail, "No scanned pnpm store is available.");
}

TEST_F(ToolCleanup, NoScannedFoldersOrNoOutputFileMeansNoCommand) {
    auto npm = built("npm", ".npm/_cacache");
    tool("npm", "config get cache", "echo '" + home / ".npm" + "'");
    environment.set("TMPDIR", temporary / "missing");
    EXPECT_EQ(run(npm).detail, "Could not prepare output for npm.");
    npm.paths.clear();
    EXPECT_EQ(run(npm).detail, "No scanned folders are available.");
    EXPECT_EQ(logged(), "");
    EXPECT_TRUE(reported.empty());
}

TEST_F(ToolCleanup, CancellingEndsARunningToolAndStartsNoFurtherItem) {
    const auto uv = built("uv", ".cache/uv");
    const auto npm = built("npm", ".npm/_cacache");
    tool("uv", "cache dir", "sleep 30");
    tool("npm", "config get cache", "echo '" + home / ".npm" + "'");
    ScanCancellation cancellation;
    auto configured = settings();
    configured.cancellation = &cancellation;
    std::thread canceller([&] {
        std::this_thread::sleep_for(200ms);
        cancellation.cancel();
    });
    const auto start = std::chrono::steady_clock::now();
    const auto report = CleanupExecutor(configured).run({uv, npm});
    canceller.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    ASSERT_EQ(report.results.size(), 1u);
    EXPECT_EQ(report.results[0].detail,
              "uv was stopped before it finished. Any subprocesses may still be finishing; scan "
              "again before attempting another cleanup.");
    EXPECT_EQ(logged(), "");
}

}  // namespace veldan
