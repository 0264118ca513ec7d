// The recommendation rules, thresholds and order, on real folders in a temporary home.

#include "recommendations/RecommendationBuilder.hpp"

#include <gtest/gtest.h>

#include "recommendations/RecommendationCommands.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

using Sizes = std::map<std::string, int64_t>;

constexpr int64_t large = RecommendationBuilder::minimumBytes + 1;

ScanSnapshot snapshotOf(const Sizes& sizes) {
    ScanSnapshot snapshot;
    snapshot.discoveredDirectories = sizes;
    return snapshot;
}

// The folders exist on disk so their identities can be read, as after a real scan.
Sizes folders(const Sizes& sizes) {
    for (const auto& [path, bytes] : sizes)
        test::makeFolders(path);
    return sizes;
}

std::vector<std::string> ids(const std::vector<Recommendation>& recommendations) {
    std::vector<std::string> out;
    for (const auto& recommendation : recommendations)
        out.push_back(recommendation.id);
    return out;
}

const Recommendation* find(const std::vector<Recommendation>& recommendations,
                           const std::string& id) {
    for (const auto& recommendation : recommendations) {
        if (recommendation.id == id) return &recommendation;
    }
    return nullptr;
}

class Builder : public ::testing::Test {
protected:
    test::IsolatedHome home;
    std::string h(const std::string& relative) const { return home / relative; }
    std::vector<Recommendation> buildHome(const Sizes& sizes) const {
        return RecommendationBuilder::build(home.home(), snapshotOf(folders(sizes)));
    }
};

}  // namespace

TEST_F(Builder, PackageCachesNeedMoreThanTenMillionBytes) {
    EXPECT_TRUE(buildHome({{h(".npm/_cacache"), 10'000'000}}).empty());
    const auto built = buildHome({{h(".npm/_cacache"), 10'000'001}});
    ASSERT_EQ(ids(built), std::vector<std::string>{"npm"});
    const auto& npm = built[0];
    EXPECT_EQ(npm.kind, RecommendationKind::safe);
    EXPECT_EQ(npm.bytes, 10'000'001);
    EXPECT_EQ(npm.paths, std::vector<std::string>{h(".npm/_cacache")});
    EXPECT_EQ(npm.command,
              RecommendationCommands::guardedCacheCommand("npm", "npm config get cache", h(".npm"),
                                                          "npm cache clean --force", "npm cache"));
    EXPECT_EQ(npm.folderIdentities.at(h(".npm/_cacache")),
              *ScanFolderIdentity::read(h(".npm/_cacache")));
}

TEST_F(Builder, AScanOutsideTheHomeFolderUsesOnlyTheFolderNameRules) {
    test::TempDir elsewhere;
    const std::string project = elsewhere / "project";
    test::makeFolders(project);
    test::writeFile(project + "/package.json", "{}");
    test::writeFile(project + "/Package.swift", "");
    const Sizes sizes = folders({{h(".npm/_cacache"), large},
                                 {h(".codex"), large},
                                 {h("Library/pnpm/store"), large},
                                 {project + "/.next", 5},
                                 {project + "/.build", 4},
                                 {project + "/DerivedData", large},
                                 {project + "/node_modules", 3}});
    EXPECT_EQ(ids(RecommendationBuilder::build(project, snapshotOf(sizes))),
              (std::vector<std::string>{"next", "swiftpm", "xcode-custom", "modules"}));
    // A folder whose name merely starts like the home folder's does not cover it.
    EXPECT_EQ(find(RecommendationBuilder::build(home.home() + "-other", snapshotOf(sizes)), "npm"),
              nullptr);
    EXPECT_NE(find(RecommendationBuilder::build("/", snapshotOf(sizes)), "npm"), nullptr);
    EXPECT_NE(find(RecommendationBuilder::build(home.home() + "/..", snapshotOf(sizes)), "codex"),
              nullptr)
        << "a parent of the home folder covers it";
    EXPECT_EQ(find(RecommendationBuilder::build(h("Library"), snapshotOf(sizes)), "npm"), nullptr);
}

TEST_F(Builder, NextOutputIsSafeOnlyBesideAPackageJsonAndNeverInsideGeneratedTrees) {
    test::TempDir dir;
    const std::string app = dir / "app", lib = dir / "lib";
    test::makeFolders(app);
    test::writeFile(app + "/package.json", "{}");
    const Sizes sizes = folders({{app + "/.next", 700},
                                 {app + "/.next/cache/.next", 100},
                                 {lib + "/.next", 300},
                                 {app + "/node_modules/pkg/.next", 900},
                                 {app + "/node_modules", 50}});
    const auto built = RecommendationBuilder::build(dir.path(), snapshotOf(sizes));
    ASSERT_EQ(ids(built), (std::vector<std::string>{"next", "next-unverified", "modules"}));
    EXPECT_EQ(built[0].paths, std::vector<std::string>{app + "/.next"});
    EXPECT_EQ(built[0].bytes, 700);
    EXPECT_EQ(built[0].command,
              RecommendationCommands::guardedGeneratedRemoval(
                  app + "/.next", "package.json", ScanFolderIdentity::read(app + "/.next")));
    EXPECT_EQ(built[1].kind, RecommendationKind::review);
    EXPECT_EQ(built[1].command, "xdg-open '" + lib + "/.next'");
}

TEST_F(Builder, WhatIsAlreadyInATrashIsNeverOfferedAgain) {
    test::TempDir dir;
    const std::string trashed = home.dataHome() + "/Trash/files/app";
    const std::string volumeTrashed = dir / ".Trash-0/files/app";
    for (const auto& project : {trashed, volumeTrashed}) {
        test::makeFolders(project);
        test::writeFile(project + "/package.json", "{}");
    }
    EXPECT_TRUE(buildHome({{trashed + "/.next", large}}).empty());
    EXPECT_TRUE(
        RecommendationBuilder::build(dir.path(), snapshotOf(folders({{volumeTrashed + "/.next", 5},
                                                                     {dir / ".Trash/x/.next", 5}})))
            .empty());
}

TEST_F(Builder, SwiftBuildFoldersCountOneFolderInTheSingular) {
    test::TempDir dir;
    for (const char* name : {"a", "b"}) {
        test::makeFolders(dir / name);
        test::writeFile(dir / (std::string(name) + "/Package.swift"), "");
    }
    const auto one = RecommendationBuilder::build(
        dir.path(), snapshotOf(folders({{dir / "a/.build", 10}, {dir / "c/.build", 20}})));
    ASSERT_EQ(ids(one), (std::vector<std::string>{"swiftpm", "swiftpm-unverified"}));
    EXPECT_EQ(one[0].subtitle, "1 generated folder");
    EXPECT_EQ(one[1].command, "xdg-open '" + dir / "c/.build" + "'");
    const auto two = RecommendationBuilder::build(
        dir.path(), snapshotOf(folders({{dir / "a/.build", 10}, {dir / "b/.build", 20}})));
    EXPECT_EQ(two[0].subtitle, "2 generated folders");
    EXPECT_EQ(two[0].bytes, 30);
    EXPECT_NE(two[0].command.find("\nif "), std::string::npos) << "one guarded line per folder";
}

TEST_F(Builder, OnlyTheStandardLargeDerivedDataIsSafe) {
    const std::string standard = h("Library/Developer/Xcode/DerivedData");
    const std::string custom = h("work/DerivedData");
    const auto built = buildHome({{standard, large},
                                  {custom, large + 5},
                                  {custom + "/inner/DerivedData", large},
                                  {h("small/DerivedData"), 10'000'000}});
    ASSERT_EQ(ids(built), (std::vector<std::string>{"xcode", "xcode-custom"}));
    EXPECT_EQ(built[0].command, RecommendationCommands::guardedGeneratedRemoval(
                                    standard, std::nullopt, ScanFolderIdentity::read(standard)));
    EXPECT_EQ(built[1].paths, std::vector<std::string>{custom});
}

TEST_F(Builder, NodeModulesKeepsTheOutermostMeasuredFolders) {
    test::TempDir dir;
    const auto built = RecommendationBuilder::build(
        dir.path(), snapshotOf(folders({{dir / "a/node_modules", 500},
                                        {dir / "a/node_modules/x/node_modules", 200},
                                        {dir / "b/node_modules", 100},
                                        {dir / "c/node_modules", 0}})));
    ASSERT_EQ(ids(built), std::vector<std::string>{"modules"});
    EXPECT_EQ(built[0].paths,
              (std::vector<std::string>{dir / "a/node_modules", dir / "b/node_modules"}));
    EXPECT_EQ(built[0].bytes, 600);
    EXPECT_EQ(built[0].command, "xdg-open '" + dir / "a/node_modules" + "'\nxdg-open '" +
                                    dir / "b/node_modules" + "'");
}

TEST_F(Builder, ReviewLocationsOfTheHomeFolderMustBeLarge) {
    const std::pair<const char*, const char*> expected[] = {
        {"codex", ".codex"},
        {"claude", ".claude"},
        {"docker", "Library/Containers/com.docker.docker"},
        {"huggingface", ".cache/huggingface"},
        {"appcaches", "Library/Caches"},
    };
    Sizes sizes;
    int64_t bytes = 5 * large;
    for (const auto& [id, path] : expected)
        sizes[h(path)] = bytes--;
    const auto built = buildHome(sizes);
    ASSERT_EQ(built.size(), 5u);
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(built[i].id, expected[i].first);
        EXPECT_EQ(built[i].kind, RecommendationKind::review);
        EXPECT_EQ(built[i].command, "xdg-open '" + h(expected[i].second) + "'");
    }
    for (auto& [path, size] : sizes)
        size = 10'000'000;
    EXPECT_TRUE(buildHome(sizes).empty());
}

TEST_F(Builder, PnpmJudgesEachStoreAlone) {
    const auto built =
        buildHome({{h("Library/pnpm/store"), large}, {h(".local/share/pnpm/store"), 10'000'000}});
    ASSERT_EQ(ids(built), std::vector<std::string>{"pnpm"});
    EXPECT_EQ(built[0].bytes, large);
    EXPECT_EQ(built[0].paths, std::vector<std::string>{h("Library/pnpm/store")});
    EXPECT_EQ(built[0].command,
              RecommendationCommands::pnpmPruneCommand({h("Library/pnpm/store")}));
    const auto both =
        buildHome({{h("Library/pnpm/store"), large}, {h(".local/share/pnpm/store"), large}});
    EXPECT_EQ(both[0].bytes, 2 * large);
    EXPECT_EQ(both[0].paths.size(), 2u);
}

TEST_F(Builder, SafeItemsComeFirstThenLargerFirstWithTiesInRuleOrder) {
    const auto built = buildHome({{h(".codex"), 1'000'000'000},
                                  {h(".npm/_cacache"), 20'000'000},
                                  {h(".cache/uv"), 30'000'000},
                                  {h("go/pkg/mod"), 20'000'000},
                                  {h(".claude"), 40'000'000},
                                  {h("Library/Caches"), 40'000'000}});
    EXPECT_EQ(ids(built),
              (std::vector<std::string>{"uv", "npm", "go", "codex", "claude", "appcaches"}));
    const auto reviewOnly = buildHome({{h(".claude"), 20'000'000}, {h(".codex"), 1'000'000'000}});
    EXPECT_EQ(ids(reviewOnly), (std::vector<std::string>{"codex", "claude"}));
}

TEST(NonNested, KeepsOnlyTheOutermostFolders) {
    const auto kept = RecommendationBuilder::nonNested(
        {{"/a/b", 2}, {"/a", 1}, {"/a/b/c", 3}, {"/ab", 4}, {"/x/y/z", 5}, {"/x/y/z/w", 6}});
    EXPECT_EQ(kept, (Sizes{{"/a", 1}, {"/ab", 4}, {"/x/y/z", 5}}));
}

TEST(Footprint, CountsNestedFoldersOnceAndSubtractsExclusionsInsideKeptFolders) {
    const Sizes sizes = {{"/p", 100}, {"/p/a", 30}, {"/p/a/b", 10}, {"/q", 50}, {"/r", 7}};
    EXPECT_EQ(RecommendationBuilder::footprint({"/p", "/p/a", "/q", "/missing"}, {}, sizes), 150);
    EXPECT_EQ(RecommendationBuilder::footprint({"/p/a", "/q"}, {}, sizes), 80);
    EXPECT_EQ(RecommendationBuilder::footprint({"/p", "/q"}, {"/p/a"}, sizes), 120);
    EXPECT_EQ(RecommendationBuilder::footprint({"/p", "/q"}, {"/p/a/b"}, sizes), 140);
    EXPECT_EQ(RecommendationBuilder::footprint({"/p", "/q"}, {"/r", "/missing/x"}, sizes), 150)
        << "exclusions outside the kept folders change nothing";
    EXPECT_EQ(RecommendationBuilder::footprint({"/r"}, {"/r/big"}, {{"/r", 7}, {"/r/big", 9}}), 0);
}

TEST(GeneratedFolders, CandidatesAndProjectOutputs) {
    EXPECT_FALSE(RecommendationBuilder::isGeneratedFolderCandidate("/p/next", ".next"));
    EXPECT_FALSE(RecommendationBuilder::isGeneratedFolderCandidate("/p/.build/x/.next", ".next"));
    EXPECT_FALSE(RecommendationBuilder::isGeneratedFolderCandidate("/p/.next/.build", ".build"));
    test::TempDir dir;
    test::makeFolders(dir / "p/.build");
    test::makeFolders(dir / "p/Package.swift");
    EXPECT_FALSE(
        RecommendationBuilder::isProjectOutput(dir / "p/.build", ".build", "Package.swift"))
        << "a folder is not a manifest";
}

}  // namespace veldan
