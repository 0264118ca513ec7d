#include "duplicates/DuplicateSelection.hpp"

#include <gtest/gtest.h>

#include "tests/duplicates/DuplicateTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using test::fileRecord;
using test::groupOf;

class DuplicateSelectionTest : public ::testing::Test {
protected:
    std::string in(const std::string& relative) const { return home_ / relative; }
    std::optional<std::string> reason(const std::string& path) const {
        return DuplicateSelection::finderOnlyReason(fileRecord(path), scope_);
    }
    int score(const std::string& path) const {
        return DuplicateSelection::keepScore(fileRecord(path), scope_);
    }
    // Components the way file URLs count them: "/" plus one per name.
    int depth(const std::string& path) const {
        return 1 + static_cast<int>(std::count(path.begin(), path.end(), '/'));
    }

    test::IsolatedHome home_;
    std::string scope_ = home_.home();
};

const std::string systemText = "System and app locations stay in Finder.";
const std::string outsideText = "Only copies inside the selected folder can be moved to Trash.";
const std::string libraryText = "Files in your Library stay in Finder.";
const std::string packageText = "Files inside app or media packages stay in Finder.";
const std::string libraryFolderText = "Files inside a Library folder stay in Finder.";
const std::string hiddenText = "Hidden files and folders stay in Finder.";

TEST_F(DuplicateSelectionTest, ReasonsFollowTheirOrderOfPrecedence) {
    EXPECT_EQ(reason(in("Pictures/a.jpg")), std::nullopt);
    EXPECT_EQ(reason("/usr/share/a.bin"), systemText);
    EXPECT_EQ(reason("/private"), systemText);
    EXPECT_EQ(reason("/dev/shm/a.bin"), systemText);
    EXPECT_EQ(reason("/usrlocal/a.bin"), outsideText);
    EXPECT_EQ(reason(home_.home()), outsideText);
    EXPECT_EQ(reason(in("Library/Caches/a.bin")), libraryText);
    EXPECT_EQ(reason(in("Tools/Thing.App/a.bin")), packageText);
    EXPECT_EQ(reason(in("Shots.photoslibrary")), packageText);
    EXPECT_EQ(reason(in("Work/Library/a.bin")), libraryFolderText);
    EXPECT_EQ(reason(in("Work/library/a.bin")), std::nullopt);
    EXPECT_EQ(reason(in(".config/a.bin")), hiddenText);
    EXPECT_EQ(reason(in("Work/.a.bin")), hiddenText);
    // A package that is also hidden names the package rule, which comes first.
    EXPECT_EQ(reason(in(".Old.app/a.bin")), packageText);
}

TEST_F(DuplicateSelectionTest, PathsAreStandardizedBeforeTheRulesApply) {
    EXPECT_EQ(reason(in("Work/../.hidden/a.bin")), hiddenText);
    EXPECT_EQ(reason(in("Work/./a.bin")), std::nullopt);
    EXPECT_EQ(reason(home_.home() + "/../elsewhere/a.bin"), outsideText);
}

TEST_F(DuplicateSelectionTest, WholeDiskScansOnlyMoveCopiesInsideHome) {
    scope_ = "/";
    EXPECT_EQ(reason("/Users/Shared/a.bin"), outsideText);
    EXPECT_EQ(reason("/mnt/data/a.bin"), outsideText);
    EXPECT_EQ(reason(in("Movies/a.mov")), std::nullopt);
}

TEST_F(DuplicateSelectionTest, AHomeReachedThroughALinkIsStillHome) {
    // The walk reports resolved paths; HOME names the link.
    test::TempDir links;
    test::makeSymlink(home_.home(), links / "home");
    test::ScopedEnvironment environment;
    environment.set("HOME", links / "home");
    scope_ = "/";
    EXPECT_EQ(reason(in("Movies/a.mov")), std::nullopt);
    EXPECT_EQ(reason(in("Library/a.bin")), libraryText);
    const std::string documents = in("Documents/a.bin");
    EXPECT_EQ(score(documents), 180 - depth(documents));
}

TEST_F(DuplicateSelectionTest, SystemFoldersStayEvenWhenTheSearchChoseThem) {
    for (const char* folder : {"/etc", "/var/lib", "/opt/data", "/boot", "/srv", "/lib64"}) {
        scope_ = folder;
        EXPECT_EQ(reason(scope_ + "/a.bin"), systemText) << folder;
    }
    scope_ = "/etcetera";
    EXPECT_EQ(reason("/etcetera/a.bin"), std::nullopt);
}

TEST_F(DuplicateSelectionTest, KeepScoreFavoursMediaFoldersAndDesktopAndPenalisesCopies) {
    const std::vector<std::pair<std::string, int>> cases = {
        {"Documents/a.bin", 180},
        {"Desktop/a.bin", 145},
        {"Downloads/a copy.bin", 100 - 40 - 30},
        {"Work/Report (1).pdf", 70},
        {"Music/DUPLICATE of copy.mp3", 180 - 30},  // subtracted once
    };
    for (const auto& [relative, base] : cases)
        EXPECT_EQ(score(in(relative)), base - depth(in(relative))) << relative;
    EXPECT_EQ(score(in("Library/Caches/a.bin")), 1000);
}

TEST_F(DuplicateSelectionTest, DeepPathsCountAtMostTwentyComponents) {
    std::string deep = home_.home();
    for (int i = 0; i < 30; ++i)
        deep += "/d";
    EXPECT_EQ(score(deep + "/a.bin"), 100 - 20);
}

TEST_F(DuplicateSelectionTest, SmartSelectKeepsTheBestScoredThenOldestThenFirstCopy) {
    auto older = fileRecord(in("Work/b.bin"), 1'000'000, 100);
    auto newer = fileRecord(in("Work/a.bin"), 1'000'000, 200);
    // Same second as `older`: nanoseconds do not count, Finder order decides.
    auto sameSecond = newer;
    sameSecond.createdSeconds = 100;
    sameSecond.createdNanoseconds = 999;
    const std::vector<std::pair<std::vector<DuplicateFile>, std::string>> cases = {
        {{fileRecord(in("Documents/a.bin")), fileRecord(in("Library/Caches/a.bin"))},
         in("Documents/a.bin")},
        {{fileRecord(in("Documents/a copy.bin")), fileRecord(in("Documents/a.bin"))},
         in("Documents/a copy.bin")},
        {{newer, older}, newer.path},
        {{older, sameSecond}, older.path},
        {{fileRecord(in("Work/a10.bin")), fileRecord(in("Work/a2.bin"))}, in("Work/a10.bin")},
    };
    for (const auto& [files, selected] : cases) {
        EXPECT_EQ(DuplicateSelection::smartSelect(groupOf(files), scope_),
                  DuplicatePathSet{selected})
            << selected;
    }
}

TEST_F(DuplicateSelectionTest, SmartSelectNeverSelectsFinderOnlyCopiesOrEveryCopy) {
    const auto group =
        groupOf({fileRecord(in(".hidden/a.bin")), fileRecord(in("Work/Library/a.bin")),
                 fileRecord(in("Work/a.bin")), fileRecord(in("Downloads/a.bin"))});
    const auto selected = DuplicateSelection::smartSelect(group, scope_);
    // Finder-only copies score highest, so the first of them is kept; they are never selected.
    EXPECT_EQ(selected, (DuplicatePathSet{in("Downloads/a.bin"), in("Work/a.bin")}));
    const auto lone = groupOf({fileRecord(in("Work/a.bin")), fileRecord(in("Work/b.bin"))});
    EXPECT_EQ(DuplicateSelection::smartSelect(lone, scope_).size(), 1u);
    EXPECT_TRUE(DuplicateSelection::smartSelect(DuplicateGroup{}, scope_).empty());
}

TEST_F(DuplicateSelectionTest, SelectExtrasKeepsTheChosenCopyOnlyWhenItBelongsToTheGroup) {
    const auto group = groupOf({fileRecord(in("Work/a.bin")), fileRecord(in("Work/b.bin")),
                                fileRecord(in(".cache/c.bin"))});
    EXPECT_EQ(DuplicateSelection::selectExtras(group, group.files[1], scope_),
              DuplicatePathSet{in("Work/a.bin")});
    EXPECT_TRUE(
        DuplicateSelection::selectExtras(group, fileRecord(in("Work/other.bin")), scope_).empty());
}

}  // namespace
}  // namespace veldan
