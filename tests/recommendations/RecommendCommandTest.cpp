// `veldan recommend` and `veldan clean`, run as real child processes on real folders.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/platform/TrashCli.hpp"
#include "tests/recommendations/FakeTools.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

// A project with a verified .next folder, an unverified one and dependencies.
class Command : public ::testing::Test {
protected:
    test::IsolatedHome home;
    test::TempDir dir;

    void SetUp() override {
        test::makeFolders(dir / "app/.next/cache");
        test::writeFileOfSize(dir / "app/.next/cache/data", 300'000);
        test::writeFile(dir / "app/package.json", "{}");
        test::makeFolders(dir / "lib/.next");
        test::writeFileOfSize(dir / "lib/.next/data", 100'000);
        test::makeFolders(dir / "app/node_modules/x");
        test::writeFileOfSize(dir / "app/node_modules/x/index.js", 200'000);
    }

    test::ProcessResult veldan(std::vector<std::string> args,
                               std::optional<std::string> input = {}) {
        args.insert(args.begin(), test::veldanBinary());
        test::ProcessOptions options;
        options.environment = home.environment();
        options.input = std::move(input);
        return test::runProcess(args, options);
    }

    // The command on a pseudo-terminal (util-linux `script`), answering `answer`.
    test::ProcessResult onTerminal(const std::string& arguments, const std::string& answer) {
        test::ProcessOptions options;
        options.environment = home.environment();
        options.input = answer;
        return test::runProcess(
            {"script", "-qec", test::veldanBinary() + " " + arguments, "/dev/null"}, options);
    }
};

}  // namespace

TEST_F(Command, RecommendListsEachItemWithItsKindSizeAndFoldersAndTheTotal) {
    const auto run = veldan({"recommend", dir.path()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::string& out = run.out;
    const auto safe = out.find("\nSafe to remove\n");
    const auto review = out.find("\nReview first\n");
    ASSERT_NE(safe, std::string::npos) << out;
    ASSERT_NE(review, std::string::npos) << out;
    EXPECT_LT(safe, review);
    const auto next = out.find("  Next.js build output \u2014 ");
    EXPECT_GT(next, safe);
    EXPECT_LT(next, review);
    EXPECT_NE(out.find("[next]\n    1 generated .next folders\n    " + dir / "app/.next" + "\n"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("[next-unverified]\n    No adjacent package.json; check these folders in "
                       "Finder\n    " +
                       dir / "lib/.next" + "\n"),
              std::string::npos);
    EXPECT_NE(out.find("[modules]\n    1 node_modules folders \u00b7 review projects\n"),
              std::string::npos);
    EXPECT_TRUE(
        out.ends_with("safe to remove\nOverlapping folders are counted once in the total "
                      "above.\n"))
        << out;
    EXPECT_EQ(run.err, "") << "no progress line without a terminal";
}

TEST_F(Command, RecommendJsonNamesKindsActionsAndBytes) {
    const auto run = veldan({"recommend", "--json", dir.path()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["root"], dir.path());
    ASSERT_EQ(json["recommendations"].size(), 3u);
    const auto& next = json["recommendations"][0];
    EXPECT_EQ(next["id"], "next");
    EXPECT_EQ(next["kind"], "safe");
    EXPECT_EQ(next["action"], "Move generated folders to Trash");
    EXPECT_EQ(next["paths"], nlohmann::json::array({dir / "app/.next"}));
    EXPECT_GT(next["bytes"].get<int64_t>(), 300'000);
    EXPECT_EQ(json["recommendations"][1]["kind"], "review");
    EXPECT_TRUE(json["recommendations"][1]["action"].is_null());
    EXPECT_EQ(json["safeBytes"], next["bytes"]);
    EXPECT_GT(json["totalBytes"].get<int64_t>(), json["safeBytes"].get<int64_t>());
}

TEST_F(Command, RecommendFromTheSavedMapNeedsNoScan) {
    const auto none = veldan({"recommend", "--saved", dir.path()});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_NE(none.err.find("There is no saved map of"), std::string::npos) << none.err;

    ASSERT_EQ(veldan({"scan", dir.path()}).exitCode, 0);
    const auto fresh = veldan({"recommend", "--json", dir.path()});
    // What the saved map knows, even after the folder grew: it lists what was measured.
    test::writeFileOfSize(dir / "app/.next/cache/more", 900'000);
    const auto saved = veldan({"recommend", "--saved", "--json", dir.path()});
    ASSERT_EQ(saved.exitCode, 0) << saved.err;
    EXPECT_EQ(saved.out, fresh.out);
    EXPECT_NE(veldan({"recommend", "--json", dir.path()}).out, fresh.out);
}

TEST_F(Command, RecommendScriptOfTheSelectionRunsAsPrinted) {
    const auto run = veldan({"recommend", dir.path(), "--script", "--select", "next,modules"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("#!/bin/sh\nset -e\n")) << run.out;
    EXPECT_NE(run.out.find("# Review first: Project dependencies"), std::string::npos);
    EXPECT_EQ(run.out.find("Other .next folders"), std::string::npos) << "not selected";
    const auto script = test::runProcess({"/bin/sh", "-c", run.out});
    EXPECT_EQ(script.exitCode, 0) << script.err;
    EXPECT_FALSE(test::exists(dir / "app/.next"));
    EXPECT_TRUE(test::exists(dir / "lib/.next"));
    EXPECT_TRUE(test::exists(dir / "app/node_modules"));

    const auto unknown = veldan({"recommend", dir.path(), "--select", "nope"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err,
              "veldan: This scan has no recommendation \"nope\"; run \"veldan recommend\" to see "
              "the ids.\n");
}

TEST_F(Command, CleanWithYesMovesTheSafeItemsAndExcludesReviewItems) {
    const auto run = veldan({"clean", dir.path(), "--select", "next", "modules", "--yes"});
    ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("Next.js build output \u2014 "), std::string::npos);
    EXPECT_NE(run.out.find(": Move generated folders to Trash\n    " + dir / "app/.next" + "\n"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("Excluded: Project dependencies (Review first)\n"), std::string::npos);
    EXPECT_NE(run.out.find("Review first items are always excluded.\n"), std::string::npos);
    EXPECT_NE(run.out.find("Succeeded: Next.js build output \u2014 Moved 1 of 1 folder(s) to "),
              std::string::npos)
        << run.out;
    EXPECT_TRUE(run.out.ends_with("Space comes back only when the Trash is emptied.\n"));
    EXPECT_FALSE(test::exists(dir / "app/.next"));
    EXPECT_TRUE(test::exists(dir / "app/node_modules/x/index.js"));
    EXPECT_TRUE(test::trashListShows(test::trashList(), dir / "app/.next"));

    const auto onlyReview = veldan({"clean", dir.path(), "--select", "modules", "--yes"});
    EXPECT_EQ(onlyReview.exitCode, 1);
    EXPECT_EQ(onlyReview.err,
              "veldan: None of the selected recommendations can be cleaned in Veldan.\n");
}

TEST_F(Command, CleanReportsFoldersThatStayedAndFails) {
    // No home Trash can be made: the folder stays and the command says why.
    test::makeFolders(home.home() + "/.local");
    test::writeFile(home.dataHome(), "");
    const auto run = veldan({"clean", dir.path(), "--select", "next", "--yes"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("Failed: Next.js build output \u2014 No folders moved to Trash.\n    "
                           "Stayed: " +
                           dir / "app/.next" + " \u2014 No usable Trash exists"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(run.out.find("Space comes back"), std::string::npos);
    EXPECT_TRUE(test::exists(dir / "app/.next/cache/data"));
}

TEST_F(Command, CleanAsksOnATerminalAndDoesNothingWithoutAYes) {
    // Standard input is a pipe here, so there is no terminal to ask on.
    const auto run = veldan({"clean", dir.path(), "--select", "next"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "veldan: Nothing was cleaned, because confirming needs a terminal; pass --yes to "
              "clean without asking.\n");
    EXPECT_EQ(veldan({"clean", dir.path()}).exitCode, 2) << "--select is required";

    const auto declined = onTerminal("clean " + dir.path() + " --select next", "n\n");
    EXPECT_EQ(declined.exitCode, 1);
    EXPECT_NE(declined.out.find("Go ahead? [y/N] "), std::string::npos) << declined.out;
    EXPECT_NE(declined.out.find("Nothing was cleaned."), std::string::npos);
    EXPECT_TRUE(test::exists(dir / "app/.next/cache/data"));

    const auto accepted = onTerminal("clean " + dir.path() + " --select next", "y\n");
    EXPECT_EQ(accepted.exitCode, 0) << accepted.out;
    EXPECT_NE(accepted.out.find("Moved 1 of 1 folder(s) to Trash."), std::string::npos);
    EXPECT_FALSE(test::exists(dir / "app/.next"));
}

// The tool search path puts ~/.local/bin before the inherited PATH, so a fake npm there
// stands in for any real one.
TEST_F(Command, CleanRunsAToolCleanupAndCtrlCEndsIt) {
    test::makeFolders(home / ".npm/_cacache");
    test::writeFileOfSize(home / ".npm/_cacache/index", 10'100'000);
    test::makeFolders(home / ".local/bin");
    test::writeScript(
        home / ".local/bin/npm",
        "if [ \"$1\" = config ]; then echo \"$HOME/.npm\"; else echo ran > \"$HOME/ran\"; "
        "fi\n");
    const auto run = veldan({"clean", home.home(), "--select", "npm", "--yes"});
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("  npm cache \u2014 10 MB: Run the tool's own cache cleanup\n"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("Succeeded: npm cache \u2014 npm finished its cache cleanup."),
              std::string::npos);
    EXPECT_TRUE(test::exists(home / "ran"));

    test::writeScript(home / ".local/bin/npm",
                      "if [ \"$1\" = config ]; then echo \"$HOME/.npm\"; else sleep 30; fi\n");
    test::ProcessOptions options;
    options.environment = home.environment();
    const auto start = std::chrono::steady_clock::now();
    const auto stopped = test::runInTerminal(
        {test::veldanBinary(), "clean", home.home(), "--select", "npm", "--yes"}, options,
        "Cleaning npm cache");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(stopped.exitCode, 130) << stopped.out;
    EXPECT_NE(stopped.out.find("npm was stopped before it finished."), std::string::npos)
        << stopped.out;
}

}  // namespace veldan
