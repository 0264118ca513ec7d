// The `veldan ai` command, run as a real child process against a temporary home and a
// real Trash.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"

namespace veldan {
namespace {

class AICommandTest : public ::testing::Test {
protected:
    void write(const std::string& relative, int64_t bytes) {
        const std::string path = home_ / relative;
        test::makeFolders(path.substr(0, path.rfind('/')));
        test::writeFileOfSize(path, bytes);
    }
    test::ProcessResult veldan(std::vector<std::string> args, const char* command = "ai") {
        args.insert(args.begin(), {test::veldanBinary(), command});
        test::ProcessOptions options;
        options.environment = home_.environment();
        return test::runProcess(args, options);
    }
    // The location of `path` in the JSON document of `veldan ai --json`.
    static nlohmann::json location(const nlohmann::json& document, const std::string& path) {
        for (const auto& group : document["groups"]) {
            for (const auto& found : group["locations"]) {
                if (found["path"] == path) return found;
            }
        }
        return nullptr;
    }

    test::IsolatedHome home_;
};

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(AICommandTest, AddedFoldersAreMeasuredListedAndForgottenWithoutTouchingTheirFiles) {
    auto empty = veldan({});
    EXPECT_EQ(empty.exitCode, 0);
    EXPECT_EQ(empty.out,
              "No AI storage found\nAdd a custom folder if your tools store data elsewhere.\n");

    write("weights/m.bin", 30'000);
    auto added = veldan({"add", home_ / "weights", "--tool", "ollama", "--kind", "models"});
    ASSERT_EQ(added.exitCode, 0) << added.err;
    EXPECT_TRUE(has(added.out, "Removing it later will leave its files untouched.")) << added.out;
    for (const std::string& refused : {home_ / "weights", home_ / "missing"}) {
        auto again = veldan({"add", refused});
        EXPECT_EQ(again.exitCode, 1);
        EXPECT_TRUE(has(again.err, "This folder is unavailable or already added.")) << again.err;
    }
    EXPECT_EQ(veldan({"list-added"}).out, home_ / "weights" + "  Ollama \u00b7 Models\n");

    auto measured = nlohmann::json::parse(veldan({"--json"}).out);
    const auto weights = location(measured, home_ / "weights");
    EXPECT_EQ(weights["bytes"], test::allocatedBytes(home_ / "weights/m.bin"));
    EXPECT_EQ(weights["isCustom"], true);
    EXPECT_EQ(measured["groups"][0]["tool"], "ollama");

    test::removeTree(home_ / "weights");
    EXPECT_TRUE(has(veldan({}).out, "This added folder is no longer available"));
    auto removed = veldan({"remove", home_ / "weights"});
    EXPECT_EQ(removed.exitCode, 0) << removed.err;
    EXPECT_EQ(veldan({"remove", home_ / "weights"}).exitCode, 1);
    EXPECT_TRUE(has(veldan({"list-added"}).out, "No folders added."));
}

TEST_F(AICommandTest, ShowsEveryLocationAndMovesOnlySelectedCachesAndLogs) {
    write(".ollama/models/blobs/m", 400'000);
    write(".ollama/logs/server.log", 20'000);
    write(".claude/projects/p/chat.jsonl", 30'000);
    write(".claude/cache/c", 40'000);
    write(".claude/settings.json", 1'000);
    write("elsewhere/x", 1'000);
    test::makeSymlink(home_ / "elsewhere", home_ / ".codex");

    auto listing = veldan({});
    ASSERT_EQ(listing.exitCode, 0) << listing.err;
    for (const std::string& part :
         {"Ollama \u00b7 ", "Downloaded models", "[ ] Logs", "Claude Code", "Project conversations",
          "Nested locations are shown separately and excluded from this size.", "Link unavailable",
          "Reveal it in the file manager to review it.",
          "Caches and logs that can move to Trash: 2 locations"}) {
        EXPECT_TRUE(has(listing.out, part)) << part << "\n" << listing.out;
    }

    auto mistaken = veldan({"--select", home_ / ".ollama/models", "--trash", "--yes"});
    EXPECT_EQ(mistaken.exitCode, 1);
    EXPECT_TRUE(has(mistaken.err, "This location is not approved for in-app cleanup."));
    EXPECT_EQ(veldan({"--trash", "--yes"}).exitCode, 2);
    EXPECT_TRUE(test::exists(home_ / ".ollama/models/blobs/m"));

    auto moved = veldan({"--json", "--select", "caches", "logs", "--trash", "--yes"});
    ASSERT_EQ(moved.exitCode, 0) << moved.err;
    EXPECT_TRUE(has(moved.err, "Veldan checks each location again before moving it to Trash."));
    EXPECT_TRUE(has(moved.err, "Tools may recreate these folders."));
    const auto document = nlohmann::json::parse(moved.out);
    EXPECT_EQ(document["cleanup"]["title"], "Caches & logs moved to Trash");
    EXPECT_EQ(document["cleanup"]["movedCount"], 2);
    EXPECT_EQ(document["needsRefreshAfterMove"], true);
    EXPECT_EQ(location(document, home_ / ".claude/cache")["selected"], true);
    const auto trash = test::trashList();
    EXPECT_TRUE(test::trashListShows(trash, home_ / ".claude/cache")) << trash;
    EXPECT_TRUE(test::trashListShows(trash, home_ / ".ollama/logs")) << trash;
    const auto history = nlohmann::json::parse(veldan({"--json"}, "activity").out);
    EXPECT_EQ(history["activities"][0]["title"], "AI tool caches");
    EXPECT_EQ(history["activities"][0]["count"], 2);
    EXPECT_TRUE(test::exists(home_ / ".claude/projects/p/chat.jsonl"));
    EXPECT_TRUE(test::exists(home_ / ".ollama/models/blobs/m"));
}

}  // namespace
}  // namespace veldan
