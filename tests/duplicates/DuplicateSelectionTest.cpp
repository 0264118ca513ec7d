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

TEST_F(DuplicateSelectionTest, ReasonsFollowTheirOrderOfPrecedence) {
    EXPECT_EQ(reason(in("Pictures/a.jpg")), std::nullopt);
    EXPECT_EQ(reason("/usr/share/a.bin"), "System and app locations stay in Finder.");
    EXPECT_EQ(reason("/Library/a.bin"), "System and app locations stay in Finder.");
    EXPECT_EQ(reason("/private"), "System and app locations stay in Finder.");
    EXPECT_EQ(reason("/dev/shm/a.bin"), "System and app locations stay in Finder.");
    EXPECT_EQ(reason("/usrlocal/a.bin"),
              "Only copies inside the selected folder can be moved to Trash.");
    EXPECT_EQ(reason("/srv/a.bin"),
              "Only copies inside the selected folder can be moved to Trash.");
    EXPECT_EQ(reason(home_.home()),
              "Only copies inside the selected folder can be moved to Trash.");
    EXPECT_EQ(reason(in("Library/Caches/a.bin")), "Files in your Library stay in Finder.");
    EXPECT_EQ(reason(in("Tools/Thing.App/a.bin")),
              "Files inside app or media packages stay in Finder.");
    EXPECT_EQ(reason(in("Shots.photoslibrary")),
              "Files inside app or media packages stay in Finder.");
    EXPECT_EQ(reason(in("Work/Library/a.bin")), "Files inside a Library folder stay in Finder.");
    EXPECT_EQ(reason(in("Work/library/a.bin")), std::nullopt);
    EXPECT_EQ(reason(in(".config/a.bin")), "Hidden files and folders stay in Finder.");
    EXPECT_EQ(reason(in("Work/.a.bin")), "Hidden files and folders stay in Finder.");
    // A package that is also hidden names the package rule, which comes first.
    EXPECT_EQ(reason(in(".Old.app/a.bin")), "Files inside app or media packages stay in Finder.");
}

TEST_F(DuplicateSelectionTest, PathsAreStandardizedBeforeTheRulesApply) {
    EXPECT_EQ(reason(in("Work/../.hidden/a.bin")), "Hidden files and folders stay in Finder.");
    EXPECT_EQ(reason(in("Work/./a.bin")), std::nullopt);
    EXPECT_EQ(reason(home_.home() + "/../elsewhere/a.bin"),
              "Only copies inside the selected folder can be moved to Trash.");
}

TEST_F(DuplicateSelectionTest, WholeDiskScansOnlyMoveCopiesInsideHome) {
    scope_ = "/";
    EXPECT_EQ(reason("/Users/Shared/a.bin"),
              "Only copies inside the selected folder can be moved to Trash.");
    EXPECT_EQ(reason("/etc/a.conf"),
              "Only copies inside the selected folder can be moved to Trash.");
    EXPECT_EQ(reason("/var/lib/a.bin"),
              "Only copies inside the selected folder can be moved to Trash.");
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
    EXPECT_EQ(reason(in("Library/a.bin")), "Files in your Library stay in Finder.");
    const std::string documents = in("Documents/a.bin");
    EXPECT_EQ(score(documents), 180 - depth(documents));
}

TEST_F(DuplicateSelectionTest, ChosenFoldersOutsideTheSystemLocationsAreTheUsers) {
    scope_ = "/opt/data";
    EXPECT_EQ(reason("/opt/data/a.bin"), std::nullopt);
    scope_ = "/var/home/someone";
    EXPECT_EQ(reason("/var/home/someone/Work/a.bin"), std::nullopt);
    scope_ = "/usr/local";
    EXPECT_EQ(reason("/usr/local/a.bin"), "System and app locations stay in Finder.");
}

TEST_F(DuplicateSelectionTest, KeepScoreFavoursMediaFoldersAndDesktopAndPenalisesCopies) {
    const std::string documents = in("Documents/a.bin");
    EXPECT_EQ(score(documents), 180 - depth(documents));
    const std::string desktop = in("Desktop/a.bin");
    EXPECT_EQ(score(desktop), 145 - depth(desktop));
    const std::string downloads = in("Downloads/a copy.bin");
    EXPECT_EQ(score(downloads), 100 - 40 - 30 - depth(downloads));
    const std::string plain = in("Work/Report (1).pdf");
    EXPECT_EQ(score(plain), 70 - depth(plain));
    const std::string duplicate = in("Music/DUPLICATE of copy.mp3");
    EXPECT_EQ(score(duplicate), 180 - 30 - depth(duplicate));  // subtracted once
    EXPECT_EQ(score(in("Library/Caches/a.bin")), 1000);
}

TEST_F(DuplicateSelectionTest, DeepPathsCountAtMostTwentyComponents) {
    std::string deep = home_.home();
    for (int i = 0; i < 30; ++i)
        deep += "/d";
    EXPECT_EQ(score(deep + "/a.bin"), 100 - 20);
}

TEST_F(DuplicateSelectionTest, SmartSelectKeepsTheLibraryCopyAndSelectsTheEligibleOne) {
    const auto group =
        groupOf({fileRecord(in("Documents/a.bin")), fileRecord(in("Library/Caches/a.bin"))});
    EXPECT_EQ(DuplicateSelection::smartSelect(group, scope_),
              DuplicatePathSet{in("Documents/a.bin")});
}

TEST_F(DuplicateSelectionTest, SmartSelectKeepsTheCopyWithoutCopyInItsName) {
    const auto group =
        groupOf({fileRecord(in("Documents/a copy.bin")), fileRecord(in("Documents/a.bin"))});
    EXPECT_EQ(DuplicateSelection::smartSelect(group, scope_),
              DuplicatePathSet{in("Documents/a copy.bin")});
}

TEST_F(DuplicateSelectionTest, SmartSelectKeepsTheOlderCopyIgnoringNanoseconds) {
    auto older = fileRecord(in("Work/b.bin"), 1'000'000, 100);
    auto newer = fileRecord(in("Work/a.bin"), 1'000'000, 200);
    EXPECT_EQ(DuplicateSelection::smartSelect(groupOf({newer, older}), scope_),
              DuplicatePathSet{newer.path});
    // Same second: nanoseconds do not count, Finder order decides.
    newer.createdSeconds = 100;
    newer.createdNanoseconds = 999;
    EXPECT_EQ(DuplicateSelection::smartSelect(groupOf({older, newer}), scope_),
              DuplicatePathSet{older.path});
}

TEST_F(DuplicateSelectionTest, SmartSelectBreaksFullTiesInFinderOrder) {
    const auto group = groupOf({fileRecord(in("Work/a10.bin")), fileRecord(in("Work/a2.bin"))});
    EXPECT_EQ(DuplicateSelection::smartSelect(group, scope_), DuplicatePathSet{in("Work/a10.bin")});
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
