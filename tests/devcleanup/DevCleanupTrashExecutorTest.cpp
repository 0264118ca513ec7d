// Moving generated folders to a real Trash in a temporary home, after every check, on
// real project folders changed in every way a check exists for.

#include "devcleanup/DevCleanupTrashExecutor.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include "devcleanup/DevCleanupScanner.hpp"
#include "tests/devcleanup/DevTestSupport.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

class DevCleanupTrashExecutorTest : public ::testing::Test {
protected:
    std::string path(const std::string& relative) const { return dir_ / relative; }
    void project(const std::string& name, const std::string& manifest = "package.json",
                 const std::string& folder = "node_modules") {
        test::layOut(dir_.path(), {name + "/" + manifest, name + "/" + folder + "/pkg/index.js"});
    }
    const DevCleanupItem& item(const std::string& relative) {
        return test::itemAt(result_, path(relative));
    }
    static void replaceWithLink(const std::string& folder) {
        ASSERT_EQ(::rename(folder.c_str(), (folder + ".real").c_str()), 0);
        test::makeSymlink(folder + ".real", folder);
    }
    static std::vector<std::string> details(const DevCleanupReport& report) {
        std::vector<std::string> out;
        for (const auto& move : report.moves)
            out.push_back(move.detail);
        return out;
    }

    test::IsolatedHome home_;
    test::TempDir dir_;
    DevCleanupResult result_;
};

TEST_F(DevCleanupTrashExecutorTest, EachCheckRefusesInItsOrderAndOnlyTheUnchangedFolderMoves) {
    for (const char* name : {"incomplete", "parent", "swapped", "replaced", "late", "ok", "added"})
        project(name);
    project("rust", "Cargo.toml", "target");
    result_ = test::searched(dir_.path());
    test::TempDir elsewhere;
    test::layOut(elsewhere.path(), {"p/package.json", "p/node_modules/"});
    DevCleanupItem outside =
        test::itemAt(test::searched(elsewhere.path()), elsewhere / "p/node_modules");
    outside.unreadableItems = 1;  // the location is looked at first
    DevCleanupItem scope = item("ok/node_modules");
    scope.path = dir_.path();
    DevCleanupItem incomplete = item("incomplete/node_modules");
    incomplete.unreadableItems = 1;
    replaceWithLink(path("parent"));
    replaceWithLink(path("swapped/node_modules"));
    test::recreateWithSameInode(path("replaced/node_modules"));
    ASSERT_EQ(::unlink(path("rust/Cargo.toml").c_str()), 0);
    test::writeFile(path("added/node_modules/pkg/new.js"), "");
    bool fired = false;
    DevCleanupMoveSeams seams;
    seams.afterContentsCheck = [&] {
        if (!std::exchange(fired, true)) ::unlink(path("late/package.json").c_str());
    };
    int afterMoveCalls = 0;
    std::vector<std::string> movedPaths;
    const DevCleanupTrashExecutor executor(
        [&](const DevCleanupReport& report) {
            ++afterMoveCalls;
            movedPaths = report.movedPaths();
        },
        seams);
    std::vector<std::tuple<int64_t, int64_t, DevCleanupMovePhase>> progress;
    const auto report = executor.run(
        {scope, outside, incomplete, item("parent/node_modules"), item("swapped/node_modules"),
         item("replaced/node_modules"), item("rust/target"), item("added/node_modules"),
         item("late/node_modules"), item("ok/node_modules")},
        dir_.path(), [&](int64_t done, int64_t total, DevCleanupMovePhase phase) {
            progress.emplace_back(done, total, phase);
        });

    const std::string outsideText = "Outside the selected search folder.";
    const std::string elsewhereText = "A folder in this path now points elsewhere. Scan again.";
    const std::string changedText = "This folder changed or no longer matches. Scan again.";
    EXPECT_EQ(details(report),
              (std::vector<std::string>{
                  outsideText, outsideText, "This folder was not measured completely. Scan again.",
                  elsewhereText, elsewhereText, changedText, changedText,
                  "Files inside this folder changed or could not be read. Scan again.",
                  "This folder changed during verification. Scan again.", "Moved to Trash"}));
    EXPECT_EQ(report.movedCount(), 1);
    EXPECT_EQ(report.bytesMoved, item("ok/node_modules").bytes);
    EXPECT_EQ(afterMoveCalls, 1);
    EXPECT_EQ(movedPaths, std::vector<std::string>{path("ok/node_modules")});
    EXPECT_FALSE(test::exists(path("ok/node_modules")));
    for (const char* stays :
         {"incomplete/node_modules", "parent.real/node_modules", "swapped/node_modules.real",
          "added/node_modules/pkg/new.js", "late/node_modules", "rust/target"}) {
        EXPECT_TRUE(test::exists(path(stays))) << stays;
    }
    const std::string listing = test::trashList();
    EXPECT_TRUE(test::trashListShows(listing, path("ok/node_modules"))) << listing;
    EXPECT_EQ(std::count(listing.begin(), listing.end(), '\n'), 1) << listing;
    using P = DevCleanupMovePhase;
    const std::vector<std::tuple<int64_t, int64_t, P>> lastFolder(progress.end() - 3,
                                                                  progress.end());
    EXPECT_EQ(lastFolder, (std::vector<std::tuple<int64_t, int64_t, P>>{
                              {9, 10, P::checking}, {9, 10, P::moving}, {10, 10, P::finished}}));
}

TEST_F(DevCleanupTrashExecutorTest, MovesAFolderWithANameThatIsNotUtf8ByteForByte) {
    const std::string name = "proj\xff\xfe";
    test::layOut(dir_.path(), {name + "/.venv/pyvenv.cfg", name + "/.venv/lib/site.py"});
    result_ = test::searched(dir_.path());
    const auto report = DevCleanupTrashExecutor().run({item(name + "/.venv")}, dir_.path());
    EXPECT_EQ(details(report), std::vector<std::string>{"Moved to Trash"});
    EXPECT_TRUE(test::exists(home_.dataHome() + "/Trash/files/.venv/lib/site.py"));
    EXPECT_TRUE(
        test::trashListShows(test::trashList(), path("proj\xef\xbf\xbd\xef\xbf\xbd/.venv")));
}

}  // namespace
}  // namespace veldan
