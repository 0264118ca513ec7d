// The `veldan duplicates` command, run as a real child process against real files and a
// real Trash in a temporary home.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

constexpr int64_t size = 3'000'000;

class DuplicatesCommandTest : public ::testing::Test {
protected:
    std::string path(const std::string& relative) const { return dir_ / relative; }
    void write(const std::string& relative, unsigned seed = 1, int64_t bytes = size) {
        const std::string full = path(relative);
        test::makeFolders(full.substr(0, full.rfind('/')));
        test::writeFileOfSize(full, bytes, seed);
    }
    test::ProcessResult veldan(std::vector<std::string> args,
                               std::optional<std::string> input = {}) {
        args.insert(args.begin(), {test::veldanBinary(), "duplicates"});
        test::ProcessOptions options;
        options.environment = home_.environment();
        options.input = std::move(input);
        return test::runProcess(args, options);
    }
    // The command on a terminal: `script` gives it one for standard input and output.
    test::ProcessResult onTerminal(const std::vector<std::string>& args, const std::string& input) {
        std::string command = "'" + test::veldanBinary() + "' duplicates";
        for (const auto& arg : args)
            command += " '" + arg + "'";
        test::ProcessOptions options;
        options.environment = home_.environment();
        options.input = input;
        return test::runProcess({"script", "-qec", command, "/dev/null"}, options);
    }

    test::IsolatedHome home_;
    test::TempDir dir_;
};

TEST_F(DuplicatesCommandTest, PrintsEveryGroupWithItsSizesPathsAndTheTotal) {
    write("photos/a.jpg", 1);
    write("backup/a.jpg", 1);
    write("backup/b.jpg", 2);
    write("small1", 3, 999'999);
    write("small2", 3, 999'999);
    const auto result = veldan({dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "") << "no progress without a terminal";
    EXPECT_NE(result.out.find("5 files checked \u00b7 1 group of copies"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("3 MB each \u00b7 2 copies \u00b7 3 MB extra\n  " +
                              path("backup/a.jpg") + "\n  " + path("photos/a.jpg") + "\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(
        result.out.find("Extra verified copies: 3 MB\nTotal file size of extra verified copies. "
                        "APFS copies may share physical blocks, so this is not a space savings "
                        "estimate.\n"),
        std::string::npos);
    EXPECT_EQ(result.out.find("small1"), std::string::npos);
}

TEST_F(DuplicatesCommandTest, SearchesTheCurrentFolderByDefault) {
    write("a", 1);
    write("b", 1);
    test::ProcessOptions options;
    options.environment = home_.environment();
    options.workingFolder = dir_.path();
    const auto result = test::runProcess({test::veldanBinary(), "duplicates"}, options);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Duplicates in " + dir_.path() + "\n"), std::string::npos)
        << result.out;
}

TEST_F(DuplicatesCommandTest, JsonKeepsEveryPathByteForByte) {
    const std::string odd = "odd\xff name\n\"q\"";
    write("plain", 1);
    write(odd, 1);
    const auto result = veldan({"--json", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    test::ProcessOptions python;
    python.input = result.out;
    const auto parsed = test::runProcess(
        {"python3", "-c",
         "import json, os, sys\n"
         "d = json.load(sys.stdin)\n"
         "print(d['groupCount'], d['extraBytes'], d['filesVisited'], d['unreadableFiles'])\n"
         "g = d['groups'][0]\n"
         "print(g['id'].startswith('3000000-'), g['copies'], g['extraBytes'], len(g['sha256']))\n"
         "for f in g['files']: print(os.fsencode(f['path']).hex())\n"},
        python);
    ASSERT_EQ(parsed.exitCode, 0) << parsed.err << result.out;
    const auto hex = [](const std::string& text) {
        std::string out;
        for (unsigned char c : text) {
            out += "0123456789abcdef"[c >> 4];
            out += "0123456789abcdef"[c & 15];
        }
        return out;
    };
    EXPECT_EQ(parsed.out, "1 3000000 2 0\nTrue 2 3000000 64\n" + hex(path(odd)) + "\n" +
                              hex(path("plain")) + "\n");
}

TEST_F(DuplicatesCommandTest, MinimumExtraAndQueryFilterTheGroupsShown) {
    constexpr int64_t sixMegabytes = 6'000'000;
    write("two/a.mov", 1, sixMegabytes);
    write("two/b.mov", 1, sixMegabytes);
    write("three/a.iso", 2, sixMegabytes);
    write("three/b.iso", 2, sixMegabytes);
    write("three/c.iso", 2, sixMegabytes);
    auto result = veldan({"--min-extra", "10MB", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Showing 1 of 2 groups (10 MB+), 12 MB extra"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find(path("three/c.iso")), std::string::npos);
    EXPECT_EQ(result.out.find(path("two/a.mov")), std::string::npos);

    result = veldan({"--query", " A.MOV ", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find(path("two/b.mov")), std::string::npos) << "a match shows all copies";
    EXPECT_EQ(result.out.find(path("three/a.iso")), std::string::npos);

    result = veldan({"--min-extra", "100MB", "--json", dir_.path()});
    ASSERT_EQ(result.exitCode, 0);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["groups"].size(), 0u);
    EXPECT_EQ(json["groupCount"], 2);
    EXPECT_EQ(json["minimumExtraBytes"], 100'000'000);

    EXPECT_EQ(veldan({"--min-extra", "5MB", dir_.path()}).exitCode, 2);
}

TEST_F(DuplicatesCommandTest, SmartSelectShowsWhatMovesWhatStaysAndWhy) {
    write("work/report.pdf", 1);
    write("work/report copy.pdf", 1);
    write(".stash/report.pdf", 1);
    write("old/Library/report.pdf", 1);
    const auto result = veldan({"--select", "smart", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("keep   " + path(".stash/report.pdf") +
                              "  \u2014 Hidden files and folders stay in Finder.\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("keep   " + path("old/Library/report.pdf") +
                              "  \u2014 Files inside a Library folder stay in Finder.\n"),
              std::string::npos);
    EXPECT_NE(result.out.find("trash  " + path("work/report copy.pdf") + "\n"), std::string::npos);
    EXPECT_NE(result.out.find("trash  " + path("work/report.pdf") + "\n"), std::string::npos);
    EXPECT_NE(result.out.find("Smart select would move 2 copies (6 MB) to Trash"),
              std::string::npos);
    EXPECT_TRUE(test::exists(path("work/report copy.pdf"))) << "showing a selection moves nothing";

    const auto json =
        nlohmann::json::parse(veldan({"--select", "smart", "--json", dir_.path()}).out);
    int selected = 0;
    for (const auto& file : json["groups"][0]["files"])
        selected += file["selected"].get<bool>() ? 1 : 0;
    EXPECT_EQ(selected, 2);
}

TEST_F(DuplicatesCommandTest, TrashWithoutATerminalOrYesRefusesAndMovesNothing) {
    write("a", 1);
    write("b", 1);
    const auto result = veldan({"--trash", dir_.path()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(
        result.err,
        "veldan: Moving copies to Trash needs a confirmation on a terminal; add --yes to move "
        "them without asking.\n");
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(test::exists(path("a")));
    EXPECT_TRUE(test::exists(path("b")));

    // With --yes the report is part of the JSON.
    const auto moved = veldan({"--trash", "--yes", "--json", dir_.path()});
    ASSERT_EQ(moved.exitCode, 0) << moved.err;
    const auto json = nlohmann::json::parse(moved.out)["trash"];
    EXPECT_EQ(json["title"], "Copies moved to Trash");
    EXPECT_EQ(json["movedCount"], 1);
    EXPECT_EQ(json["logicalBytesMoved"], size);
    EXPECT_EQ(json["outcomes"][0]["path"], path("b"));
    EXPECT_EQ(json["outcomes"][0]["detail"], "Moved to Trash");
}

TEST_F(DuplicatesCommandTest, TrashWithYesMovesTheSmartSelectionAndReportsIt) {
    write("Pictures/a.jpg", 1);
    write("Downloads/a (1).jpg", 1);
    const auto result = veldan({"--trash", "--yes", dir_.path()});
    ASSERT_EQ(result.exitCode, 0) << result.err << result.out;
    EXPECT_NE(
        result.out.find("Copies moved to Trash\n  " + path("Downloads/a (1).jpg") +
                        "  \u2014 Moved to Trash\n1 copy moved to Trash, 3 MB. Logical size; "
                        "files remain in Trash until it is emptied.\nFiles in Trash still use "
                        "disk space until you empty it."),
        std::string::npos)
        << result.out;
    EXPECT_FALSE(test::exists(path("Downloads/a (1).jpg")));
    EXPECT_TRUE(test::exists(path("Pictures/a.jpg")));
    EXPECT_TRUE(test::trashListShows(test::trashList(), path("Downloads/a (1).jpg")));
}

TEST_F(DuplicatesCommandTest, OnATerminalShowsPhasesAndAsksBeforeMoving) {
    write("a", 1);
    write("b", 1);
    auto result = onTerminal({dir_.path(), "--trash"}, "n\n");
    ASSERT_EQ(result.exitCode, 0) << result.out;
    for (const char* phase : {"Looking for matching sizes  2 files",
                              "Comparing file samples  2 of 2", "Verifying entire files  2 of 2",
                              "Move 1 copy (3 MB) to Trash? [y/N]", "Nothing was moved."}) {
        EXPECT_NE(result.out.find(phase), std::string::npos) << phase << "\n" << result.out;
    }
    EXPECT_TRUE(test::exists(path("b")));

    result = onTerminal({dir_.path(), "--trash"}, "y\n");
    ASSERT_EQ(result.exitCode, 0) << result.out;
    EXPECT_NE(result.out.find("Copies moved to Trash"), std::string::npos) << result.out;
    EXPECT_FALSE(test::exists(path("b")));
}

TEST_F(DuplicatesCommandTest, FolderThatCannotBeSearchedGivesOneSentence) {
    const auto result = veldan({path("missing")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "veldan: Nothing exists at " + path("missing") + "; choose a folder that exists.\n");
}

TEST_F(DuplicatesCommandTest, InterruptStopsTheSearchWithNoResult) {
    // Sparse gigabytes: hashing them whole takes seconds; the interrupt comes after one,
    // long after the handler is in place even on a slow machine.
    for (const char* name : {"a", "b", "c", "d"})
        test::writeSparseFile(path(name), 4'000'000'000);
    test::ProcessOptions options;
    options.environment = home_.environment();
    const auto result = test::runProcess({"timeout", "--preserve-status", "-s", "INT", "1",
                                          test::veldanBinary(), "duplicates", dir_.path()},
                                         options);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.err, "Duplicate search stopped before it finished; nothing was moved.\n");
    EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace veldan
