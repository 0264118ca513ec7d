// The `veldan dev` command, run as a real child process against real project folders and
// a real Trash in a temporary home.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "activity/ActivityTracker.hpp"
#include "tests/devcleanup/DevTestSupport.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

constexpr int64_t january2020 = 1'579'089'600;  // 2020-01-15 12:00 UTC

class DevCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::layOut(dir_.path(),
                     {"web/package.json", "web/node_modules/", "web/.next/", "api/package.json",
                      "api/node_modules/", "cli/Cargo.toml", "cli/target/"});
        test::writeFileOfSize(dir_ / "web/node_modules/big", 3'000'000);
        test::writeFileOfSize(dir_ / "cli/target/app", 1'000'000);
        setModified(dir_ / "cli/target", january2020);
        setModified(dir_ / "api/node_modules", january2020);
    }
    static void setModified(const std::string& path, int64_t seconds) {
        const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }
    test::ProcessResult veldan(std::vector<std::string> args) {
        args.insert(args.begin(), {test::veldanBinary(), "dev"});
        test::ProcessOptions options;
        options.environment = home_.environment();
        options.environment["TZ"] = "UTC";
        return test::runProcess(args, options);
    }
    std::string line(const std::string& size, const std::string& date,
                     const std::string& relative) const {
        return "  " + std::string(7 - size.size(), ' ') + size + "  " + date + "  " +
               (dir_ / relative) + "\n";
    }

    test::IsolatedHome home_;
    test::TempDir dir_;
};

TEST_F(DevCommandTest, ListsFoldersByKindWithSizesDatesAndTheTotal) {
    const auto result = veldan({dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "") << "no progress without a terminal";
    const auto& out = result.out;
    EXPECT_NE(out.find("Generated folders in " + dir_.path() +
                       "\nLarge dependency trees are "
                       "measured once.\n\nNode dependencies \u00b7 2 folders \u00b7 3 MB\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(line("0 GB", "2020-01-15", "api/node_modules")), std::string::npos) << out;
    EXPECT_NE(out.find("\nRust builds \u00b7 1 folder \u00b7 1 MB\n" +
                       line("1 MB", "2020-01-15", "cli/target")),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("\nNext.js builds \u00b7 1 folder"), std::string::npos) << out;
    EXPECT_NE(out.find("\nTotal: 4 MB in 4 folders\n"), std::string::npos) << out;
    EXPECT_LT(out.find("Node dependencies"), out.find("Rust builds"));
    EXPECT_LT(out.find("Rust builds"), out.find("Next.js builds"));
}

TEST_F(DevCommandTest, FiltersByKindAndAgeAndJsonKeepsEveryPathByteForByte) {
    const std::string odd = "odd\xff name\n\"q\"";
    test::layOut(dir_.path(), {odd + "/Cargo.toml", odd + "/target/"});
    setModified(dir_ / (odd + "/target"), january2020);
    const auto result =
        veldan({"--json", "--kind", "rust,node", "--older-than", "30d", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    test::ProcessOptions python;
    python.input = result.out;
    const auto parsed = test::runProcess(
        {"python3", "-c",
         "import json, os, sys\n"
         "d = json.load(sys.stdin)\n"
         "print(d['foundCount'], d['kinds'], d['olderThan'], d['bytes'] == sum(i['bytes'] for i "
         "in d['items']))\n"
         "for i in d['items']: print(i['kind'], i['label'], i['modifiedAt'], "
         "os.fsencode(i['path']).hex())\n"},
        python);
    ASSERT_EQ(parsed.exitCode, 0) << parsed.err << result.out;
    const auto hex = [&](const std::string& relative) {
        std::string out;
        for (unsigned char c : dir_ / relative) {
            out += "0123456789abcdef"[c >> 4];
            out += "0123456789abcdef"[c & 15];
        }
        return out;
    };
    EXPECT_EQ(parsed.out,
              "5 ['node', 'rust'] 30d True\n"
              "node Node dependencies 2020-01-15T12:00:00Z " +
                  hex("api/node_modules") + "\nrust Rust builds 2020-01-15T12:00:00Z " +
                  hex("cli/target") + "\nrust Rust builds 2020-01-15T12:00:00Z " +
                  hex(odd + "/target") + "\n");
    EXPECT_EQ(veldan({"--older-than", "30 days", dir_.path()}).exitCode, 2);
    EXPECT_EQ(veldan({"--kind", "java", dir_.path()}).exitCode, 2);
}

TEST_F(DevCommandTest, MovesTheSelectionOnlyWhenConfirmedAndReportsEachFolder) {
    EXPECT_EQ(veldan({"--trash", dir_.path()}).exitCode, 2) << "nothing selected";
    const auto unconfirmed = veldan({"--select", "all", "--trash", dir_.path()});
    EXPECT_EQ(unconfirmed.exitCode, 1);
    EXPECT_NE(unconfirmed.err.find("needs a confirmation on a terminal"), std::string::npos);
    const auto stranger = veldan({"--select", dir_ / "web", "--trash", "--yes", dir_.path()});
    EXPECT_EQ(stranger.exitCode, 1);
    EXPECT_NE(stranger.err.find(dir_ / "web is not one of the generated folders shown"),
              std::string::npos)
        << stranger.err;
    test::ProcessOptions terminal;
    terminal.environment = home_.environment();
    terminal.input = "n\n";
    const auto declined = test::runProcess(
        {"script", "-qec",
         "'" + test::veldanBinary() + "' dev --select node --trash '" + dir_.path() + "'",
         "/dev/null"},
        terminal);
    EXPECT_NE(declined.out.find("Move 2 folders (3 MB) to Trash? [y/N]"), std::string::npos)
        << declined.out;
    EXPECT_NE(declined.out.find("Nothing was moved."), std::string::npos);
    EXPECT_NE(declined.out.find("\r\x1b[2KChecking generated folders  0 of 4"), std::string::npos)
        << "progress on a terminal";
    EXPECT_EQ(test::trashList(), "");

    const auto moved =
        veldan({"--select", "node," + dir_ / "cli/target", "--trash", "--yes", dir_.path()});
    ASSERT_EQ(moved.exitCode, 0) << moved.err << moved.out;
    EXPECT_NE(moved.out.find("  trash     3 MB  "), std::string::npos) << moved.out;
    EXPECT_NE(moved.out.find("  keep     "), std::string::npos) << "the .next build stays";
    EXPECT_NE(moved.out.find("\nFolders moved to Trash\n  " + dir_ / "web/node_modules" +
                             "  \u2014 Moved to Trash\n  " + dir_ / "api/node_modules" +
                             "  \u2014 Moved to Trash\n  " + dir_ / "cli/target" +
                             "  \u2014 Moved to Trash\n3 folders (4 MB) moved to Trash."),
              std::string::npos)
        << moved.out;
    EXPECT_TRUE(test::exists(dir_ / "web/.next"));
    EXPECT_FALSE(test::exists(dir_ / "cli/target"));
    EXPECT_TRUE(test::trashListShows(test::trashList(), dir_ / "api/node_modules"));
    const auto history = ActivityTracker(home_.stateHome() + "/Veldan/Activity.plist").history();
    ASSERT_EQ(history.activities.size(), 1u) << "the move is in the cleanup history";
    EXPECT_EQ(history.activities[0].title, "Generated folders");
    EXPECT_EQ(history.activities[0].count, 3);
}

TEST_F(DevCommandTest, FoldersNotMeasuredCompletelyAreFlaggedAndLeftOutOfTheSelection) {
    test::makeFolders(dir_ / "web/node_modules/closed/inner");
    ASSERT_EQ(::chmod((dir_ / "web/node_modules/closed").c_str(), 0700), 0);
    test::ProcessOptions options;
    options.workingFolder = "/";
    options.environment["TZ"] = "UTC";
    const auto result = test::runProcess(
        test::asNobody({test::veldanBinary(), "dev", "--select", "all", dir_.path()}), options);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("  keep      3 MB  "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(dir_ / "web/node_modules\n      Some contents could not be "
                                     "measured. Scan again before moving this folder to Trash.\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("1 item could not be read"), std::string::npos) << result.out;
}

TEST_F(DevCommandTest, AMountInsideAFolderIsNeitherMeasuredNorMovedToTheTrash) {
    test::makeFolders(dir_ / "web/node_modules/mounted");
    const std::string veldan = "'" + test::veldanBinary() + "' dev ";
    const std::string script =
        "mount -t tmpfs tmpfs '" + dir_ / "web/node_modules/mounted" + "' || exit 77; " +
        "head -c 2000000 /dev/zero > '" + dir_ / "web/node_modules/mounted/data" + "'; " + veldan +
        "--json '" + dir_.path() + "'; echo; " + veldan + "--select " + dir_ / "web/node_modules" +
        " --trash --yes '" + dir_.path() + "'; echo \"exit $?\"";
    test::ProcessOptions options;
    options.environment = home_.environment();
    const auto run = test::runProcess(
        {"unshare", "-m", "--propagation", "private", "sh", "-c", script}, options);
    if (run.exitCode == 77 || run.err.find("unshare failed") != std::string::npos) {
        GTEST_SKIP() << "mount namespaces are not available here: " << run.err;
    }
    const auto json = nlohmann::json::parse(run.out.substr(0, run.out.find('\n')));
    for (const auto& item : json["items"]) {
        if (item["path"] == dir_ / "web/node_modules") {
            EXPECT_LT(item["bytes"].get<int64_t>(),
                      test::allocatedBytes(dir_ / "web/node_modules/big") + 1'000'000)
                << "the 2 MB on the mount are not measured";
        }
    }
    EXPECT_NE(run.out.find(dir_ / "web/node_modules" + "  \u2014 This folder holds another "
                                                       "mounted file system; unmount it first.\n"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("exit 1\n"), std::string::npos) << run.out;
    EXPECT_TRUE(test::exists(dir_ / "web/node_modules/big"));
    EXPECT_EQ(test::trashList(), "");
}

}  // namespace
}  // namespace veldan
