// Moving generated folders to the Trash: every check holds on a real tree changed at the
// worst moments, and whatever moved can be listed and restored by trash-cli.

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "platform/MountPoints.hpp"
#include "recommendations/CleanupExecutor.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/MountNamespace.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

// Projects, each with a package.json and a .next folder holding a file.
class TrashCleanup : public ::testing::Test {
protected:
    test::IsolatedHome home;
    test::TempDir dir;
    std::vector<std::vector<std::string>> reported;

    std::string project(const std::string& name) {
        test::makeFolders(dir / name + "/.next/cache");
        test::writeFile(dir / name + "/.next/cache/data", "generated " + name);
        test::writeFile(dir / name + "/package.json", "{}");
        return dir / name + "/.next";
    }

    Recommendation next(const std::vector<std::string>& names) {
        ScanSnapshot snapshot;
        for (const auto& name : names)
            snapshot.discoveredDirectories[project(name)] = 100;
        auto built = RecommendationBuilder::build(dir.path(), snapshot);
        if (built.size() != 1 || built[0].id != "next") throw std::runtime_error("no next item");
        return built[0];
    }

    CleanupExecutorSettings settings() {
        CleanupExecutorSettings settings;
        settings.home = home.home();
        settings.changedPaths = [this](const std::vector<std::string>& paths) {
            reported.push_back(paths);
        };
        return settings;
    }

    CleanupItemResult run(const Recommendation& recommendation,
                          std::function<void(const std::string&)> beforeFinalCheck = {}) {
        auto configured = settings();
        configured.beforeFinalCheck = std::move(beforeFinalCheck);
        return CleanupExecutor(configured).runOne(recommendation);
    }

    // `path` is still in place with its own content: nothing of it was touched.
    void expectInPlace(const std::string& name) {
        EXPECT_EQ(test::readFile(dir / name + "/.next/cache/data"), "generated " + name) << name;
    }
};

void expectOnlyFailure(const CleanupItemResult& result, const std::string& path,
                       const std::string& reason) {
    ASSERT_EQ(result.failedFolders.size(), 1u);
    EXPECT_EQ(result.failedFolders[0], (CleanupFolderFailure{path, reason}));
    EXPECT_FALSE(result.succeeded);
}

}  // namespace

TEST_F(TrashCleanup, MovesVerifiedFoldersThatTrashCliListsAndRestoresWhole) {
    const auto recommendation = next({"web", "new\nline 'q' $(x)", "bad\xff"});
    const auto result = run(recommendation);
    EXPECT_TRUE(result.succeeded);
    EXPECT_EQ(result.id, "next");
    EXPECT_EQ(result.title, "Next.js build output");
    EXPECT_EQ(result.detail,
              "Moved 3 of 3 folder(s) to Trash. Empty Trash when you're ready to reclaim their "
              "space.");
    EXPECT_EQ(result.movedFolders, 3);
    EXPECT_EQ(result.totalFolders, 3);
    EXPECT_EQ(result.movedPaths, recommendation.paths);
    EXPECT_EQ(reported, std::vector<std::vector<std::string>>{recommendation.paths});
    for (const auto& path : recommendation.paths)
        EXPECT_FALSE(test::exists(path)) << path;

    const std::string listing = test::trashList();
    EXPECT_TRUE(test::trashListShows(listing, dir / "web/.next"));
    EXPECT_TRUE(test::trashListShows(listing, dir / "new\nline 'q' $(x)/.next"));
    ASSERT_EQ(test::trashRestore(dir / "web/.next").exitCode, 0);
    ASSERT_EQ(test::trashRestore(dir / "new\nline 'q' $(x)/.next").exitCode, 0);
    expectInPlace("web");
    expectInPlace("new\nline 'q' $(x)");
}

// Made again under the old name, the folder usually gets its inode number back.
TEST_F(TrashCleanup, AFolderReplacedAfterTheScanStaysAndTheOthersMove) {
    const auto recommendation = next({"a", "b"});
    test::recreateWithSameInode(dir / "a/.next");
    test::makeFolders(dir / "a/.next/cache");
    test::writeFile(dir / "a/.next/cache/data", "generated a");
    const auto result = run(recommendation);
    expectOnlyFailure(result, dir / "a/.next", "Changed since the scan");
    EXPECT_EQ(result.detail, "Moved 1 of 2 folder(s) to Trash.");
    EXPECT_EQ(result.movedPaths, std::vector<std::string>{dir / "b/.next"});
    expectInPlace("a");
    EXPECT_FALSE(test::exists(dir / "b/.next"));
}

TEST_F(TrashCleanup, AManifestDeletedAfterTheScanKeepsItsFolder) {
    const auto recommendation = next({"a"});
    ::unlink((dir / "a/package.json").c_str());
    const auto result = run(recommendation);
    expectOnlyFailure(result, dir / "a/.next", "Project manifest is missing");
    EXPECT_EQ(result.detail, "No folders moved to Trash.");
    EXPECT_TRUE(reported.empty());
    expectInPlace("a");
    EXPECT_EQ(test::trashList(), "");
}

TEST_F(TrashCleanup, AParentSwappedForALinkAfterTheScanIsAnUnexpectedFolder) {
    const auto recommendation = next({"a"});
    ASSERT_EQ(::rename((dir / "a").c_str(), (dir / "moved").c_str()), 0);
    test::makeSymlink(dir / "moved", dir / "a");
    const auto result = run(recommendation);
    expectOnlyFailure(result, dir / "a/.next", "Unexpected folder");
    EXPECT_EQ(test::readFile(dir / "moved/.next/cache/data"), "generated a");
}

// Each swap happens after every earlier check of project `p`'s .next folder and leaves
// the original tree at `p` + `kept`; the same inode reached through a link can only be
// told by the final look at the path, and it must be.
TEST_F(TrashCleanup, AFolderOrParentSwappedBetweenTheChecksStaysInPlace) {
    using Swap = std::function<void(const std::string& p)>;
    const std::vector<std::pair<Swap, std::string>> swaps = {
        {[](const std::string& p) {
             ::rename(p.c_str(), (p + "-moved").c_str());
             test::makeSymlink(p + "-moved", p);
         },
         "-moved/.next"},
        {[](const std::string& p) {
             ::rename((p + "/.next").c_str(), (p + "/old").c_str());
             test::makeFolders(p + "/.next");
         },
         "/old"},
        {[](const std::string& p) {
             ::rename((p + "/.next").c_str(), (p + "-real").c_str());
             test::makeSymlink(p + "-real", p + "/.next");
         },
         "-real"},
    };
    for (size_t i = 0; i < swaps.size(); ++i) {
        const std::string a = "a" + std::to_string(i), b = "b" + std::to_string(i);
        const auto result = run(next({a, b}), [&](const std::string& path) {
            if (path == dir / a + "/.next") swaps[i].first(dir / a);
        });
        expectOnlyFailure(result, dir / a + "/.next", "Changed during cleanup preparation");
        EXPECT_EQ(test::readFile(dir / a + swaps[i].second + "/cache/data"), "generated " + a);
        EXPECT_TRUE(test::exists(dir / a + "/.next")) << "what took its place stays too";
        EXPECT_FALSE(test::exists(dir / b + "/.next")) << "the other folder still moves";
    }
    EXPECT_TRUE(test::trashListShows(test::trashList(), dir / "b0/.next"));
}

class TrashCleanupMounts : public TrashCleanup {
protected:
    void SetUp() override {
        if (!test::insideMountNamespace()) GTEST_SKIP();
    }
};

TEST(TrashCleanupMount, CasesPassInAPrivateMountNamespace) {
    test::runInMountNamespace("TrashCleanupMounts", 1);
}

// Moved, the mount would go along into the Trash, and emptying it would delete files that
// were never measured; a bind mount of the same file system counts as much as any other.
TEST_F(TrashCleanupMounts, DISABLED_AFolderWithAMountInsideStaysAndTheOthersMove) {
    const auto recommendation = next({"a", "b"});
    test::makeFolders(dir / "data");
    test::writeFile(dir / "data/file", "never measured");
    const test::Mount bound(dir / "data", dir / "a/.next/cache");
    const auto result = run(recommendation);
    expectOnlyFailure(result, dir / "a/.next", std::string(platform::holdsMountReason));
    EXPECT_EQ(test::readFile(dir / "a/.next/cache/file"), "never measured");
    EXPECT_FALSE(test::exists(dir / "b/.next"));
}

TEST_F(TrashCleanup, TheHomeFolderAndTheRootAreNeverMoved) {
    // A home folder that even carries the expected name.
    const std::string named = dir / "ms-playwright";
    test::makeFolders(named);
    Recommendation playwright;
    playwright.id = "playwright";
    playwright.title = "Playwright browsers";
    playwright.kind = RecommendationKind::safe;
    playwright.paths = {named, "/", named + "/../ms-playwright"};
    playwright.folderIdentities = RecommendationBuilder::folderIdentities(playwright.paths);
    auto configured = settings();
    configured.home = named;
    const auto result = CleanupExecutor(configured).runOne(playwright);
    ASSERT_EQ(result.failedFolders.size(), 3u);
    for (const auto& failure : result.failedFolders)
        EXPECT_EQ(failure.reason, "Unexpected folder");
    EXPECT_EQ(result.detail, "No folders moved to Trash.");
    EXPECT_TRUE(test::exists(named));
}

TEST_F(TrashCleanup, AFolderWithAnotherNameOrWithoutRecordedIdentityStays) {
    auto recommendation = next({"a", "b"});
    recommendation.paths.push_back(dir / "a/package.json");
    recommendation.folderIdentities.erase(dir / "b/.next");
    const auto result = run(recommendation);
    ASSERT_EQ(result.failedFolders.size(), 2u);
    EXPECT_EQ(result.failedFolders[0],
              (CleanupFolderFailure{dir / "b/.next", "Changed since the scan"}));
    EXPECT_EQ(result.failedFolders[1],
              (CleanupFolderFailure{dir / "a/package.json", "Unexpected folder"}));
    EXPECT_EQ(result.detail, "Moved 1 of 3 folder(s) to Trash.");
    expectInPlace("b");
    EXPECT_TRUE(test::exists(dir / "a/package.json"));
}

TEST_F(TrashCleanup, AFolderInsideATrashIsAnUnexpectedFolder) {
    auto recommendation = next({"a"});
    const std::string trashed = project(".Trash-0/files/b");
    recommendation.paths.push_back(trashed);
    recommendation.folderIdentities = RecommendationBuilder::folderIdentities(recommendation.paths);
    const auto result = run(recommendation);
    expectOnlyFailure(result, trashed, "Unexpected folder");
    expectInPlace(".Trash-0/files/b");
}

TEST_F(TrashCleanup, ARefusalOfTheTrashIsTheFolderReason) {
    const auto recommendation = next({"a"});
    // The data folder is a file, so the home Trash cannot be made.
    test::makeFolders(home.home() + "/.local");
    test::writeFile(home.dataHome(), "not a folder");
    const auto result = run(recommendation);
    expectOnlyFailure(result, dir / "a/.next",
                      "No usable Trash exists on the file system that holds the item (Not a "
                      "directory), so it stayed in place.");
    expectInPlace("a");
}

TEST_F(TrashCleanup, XcodeMovesOnlyTheStandardDerivedDataFolder) {
    const std::string standard = home / "Library/Developer/Xcode/DerivedData";
    test::makeFolders(standard + "/Build");
    ScanSnapshot snapshot;
    snapshot.discoveredDirectories[standard] = 20'000'000;
    const auto built = RecommendationBuilder::build(home.home(), snapshot);
    ASSERT_EQ(built.size(), 1u);
    auto custom = built[0];
    custom.paths = {dir / "DerivedData"};
    EXPECT_EQ(run(custom).detail,
              "This is not Xcode\u2019s standard DerivedData folder. Review it in Finder.");
    const auto result = run(built[0]);
    EXPECT_TRUE(result.succeeded) << result.detail;
    EXPECT_FALSE(test::exists(standard));
    EXPECT_TRUE(test::trashListShows(test::trashList(), standard));
}

TEST_F(TrashCleanup, ReviewItemsUnknownIdsAndEmptyItemsAreNotCleaned) {
    auto recommendation = next({"a"});
    recommendation.kind = RecommendationKind::review;
    EXPECT_EQ(run(recommendation).detail, "This recommendation cannot be cleaned in Veldan.");
    recommendation.kind = RecommendationKind::safe;
    recommendation.id = "modules";
    EXPECT_EQ(run(recommendation).detail, "This recommendation cannot be cleaned in Veldan.");
    recommendation.id = "next";
    recommendation.paths.clear();
    const auto empty = run(recommendation);
    EXPECT_FALSE(empty.succeeded);
    EXPECT_EQ(empty.detail, "No scanned folders are available.");
    expectInPlace("a");
}

TEST_F(TrashCleanup, ARunSkipsReviewItemsAndCountsItsResults) {
    auto good = next({"a"});
    auto partial = next({"b", "c"});
    ::unlink((dir / "c/package.json").c_str());
    auto review = good;
    review.id = "next-unverified";
    review.kind = RecommendationKind::review;
    std::vector<std::string> started;
    const auto report =
        CleanupExecutor(settings()).run({good, review, partial}, [&](const Recommendation& r) {
            started.push_back(r.id);
        });
    EXPECT_EQ(started, (std::vector<std::string>{"next", "next"}));
    ASSERT_EQ(report.results.size(), 2u);
    EXPECT_FALSE(report.id.empty());
    EXPECT_NE(report.id, CleanupExecutor(settings()).run({}).id);
    EXPECT_EQ(report.succeededCount(), 1);
    EXPECT_EQ(report.partialCount(), 1);
    EXPECT_EQ(report.completedToolCount(), 0);
    EXPECT_EQ(report.movedPaths(), (std::vector<std::string>{dir / "a/.next", dir / "b/.next"}));
}

}  // namespace veldan
