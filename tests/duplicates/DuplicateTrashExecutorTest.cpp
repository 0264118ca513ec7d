// Moving selected duplicate copies to a real Trash in a temporary home, checked on disk
// and with trash-cli.

#include "duplicates/DuplicateTrashExecutor.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include "duplicates/DuplicateScanner.hpp"
#include "tests/duplicates/DuplicateTestSupport.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

constexpr int64_t size = 1'500'000;
constexpr const char* keepOneCopy = "Keep at least one copy in this group.";

class DuplicateTrashExecutorTest : public ::testing::Test {
protected:
    std::string path(const std::string& relative) const { return dir_ / relative; }
    void write(const std::string& relative, unsigned seed = 1) {
        const std::string full = path(relative);
        test::makeFolders(full.substr(0, full.rfind('/')));
        test::writeFileOfSize(full, size, seed);
    }
    DuplicateScanResult scan() {
        ScanCancellation cancellation;
        auto result = DuplicateScanner().scan(dir_.path(), cancellation);
        if (!result) throw std::runtime_error("scan failed");
        return std::move(*result);
    }
    DuplicateTrashReport run(const DuplicateScanResult& result, const DuplicatePathSet& selected) {
        DuplicateTrashExecutor executor([this](const std::vector<std::string>& moved) {
            ++sinkCalls_;
            changed_ = moved;
        });
        return executor.run(result, selected, [this](int64_t done, int64_t total) {
            progress_.emplace_back(done, total);
        });
    }
    // trash-list reads the trash of every mount; only this test's items matter.
    bool trashHoldsAnythingOfThisTest() const {
        return test::trashList().find(" " + dir_.path() + "/") != std::string::npos;
    }
    static std::vector<std::string> details(const DuplicateTrashReport& report) {
        std::vector<std::string> out;
        for (const auto& outcome : report.outcomes)
            out.push_back(outcome.detail);
        return out;
    }

    test::IsolatedHome home_;
    test::TempDir dir_;
    int sinkCalls_ = 0;
    std::vector<std::string> changed_;
    std::vector<std::pair<int64_t, int64_t>> progress_;
};

TEST_F(DuplicateTrashExecutorTest, SelectedCopyEditedAfterTheScanStays) {
    for (const char* name : {"a.bin", "b.bin", "c.bin"})
        write(name);
    const auto result = scan();
    test::changeByteAt(path("b.bin"), 100);
    test::setModifiedTime(path("c.bin"), 1'000'000'000);  // same bytes, other identity
    const auto report = run(result, {path("b.bin"), path("c.bin")});
    const std::string changed = "This file changed or can no longer be read. Scan again.";
    EXPECT_EQ(details(report), (std::vector<std::string>{changed, changed}));
    EXPECT_TRUE(test::exists(path("b.bin")));
    EXPECT_TRUE(test::exists(path("c.bin")));
}

TEST_F(DuplicateTrashExecutorTest, AnEditedKeeperNeedsAnotherUnchangedCopyToStandIn) {
    for (const char* name : {"two/a.bin", "two/b.bin"})
        write(name, 1);
    for (const char* name : {"three/a.bin", "three/b.bin", "three/c.bin"})
        write(name, 2);
    const auto result = scan();
    test::changeByteAt(path("two/a.bin"), 100);
    test::changeByteAt(path("three/a.bin"), 100);
    // The group of three holds more extra bytes, so it comes first.
    const auto report = run(result, {path("two/b.bin"), path("three/b.bin")});
    EXPECT_EQ(details(report),
              (std::vector<std::string>{"Moved to Trash",
                                        "No unchanged verified copy remains. Scan again."}));
    EXPECT_TRUE(test::exists(path("two/b.bin")));
    EXPECT_FALSE(test::exists(path("three/b.bin")));
    EXPECT_TRUE(test::exists(path("three/c.bin")));
}

TEST_F(DuplicateTrashExecutorTest, ParentFolderSwappedForALinkKeepsTheCopy) {
    write("keep.bin");
    write("sub/copy.bin");
    const auto result = scan();
    ASSERT_EQ(::rename(path("sub").c_str(), path("real").c_str()), 0);
    test::makeSymlink(path("real"), path("sub"));
    const auto report = run(result, {path("sub/copy.bin")});
    EXPECT_EQ(details(report),
              std::vector<std::string>{"A folder in this path now points somewhere else."});
    EXPECT_TRUE(test::exists(path("real/copy.bin")));
    EXPECT_FALSE(trashHoldsAnythingOfThisTest());
}

TEST_F(DuplicateTrashExecutorTest, ChecksFollowTheirOrderOfPrecedence) {
    write("a.bin");
    write(".hidden/b.bin");
    const auto result = scan();
    test::changeByteAt(path(".hidden/b.bin"), 5);
    // Every copy selected comes before the location, which comes before the content.
    const auto everyCopy = run(result, {path("a.bin"), path(".hidden/b.bin")});
    EXPECT_EQ(details(everyCopy), (std::vector<std::string>{keepOneCopy, keepOneCopy}));
    EXPECT_EQ(everyCopy.title(), "Some copies stayed put");
    EXPECT_EQ(everyCopy.logicalBytesMoved, 0);
    EXPECT_EQ(details(run(result, {path(".hidden/b.bin")})),
              std::vector<std::string>{"This location is outside Veldan\u2019s safe Trash scope."});
    EXPECT_TRUE(test::exists(path("a.bin")));
    EXPECT_TRUE(test::exists(path(".hidden/b.bin")));
    EXPECT_EQ(sinkCalls_, 0);
    EXPECT_FALSE(trashHoldsAnythingOfThisTest());
}

TEST_F(DuplicateTrashExecutorTest, MovesSelectedCopiesGroupByGroupAndReportsEach) {
    for (const char* name : {"big/a.bin", "big/b.bin", "big/c.bin"})
        write(name, 1);
    for (const char* name : {"other/a.bin", "other/b.bin"})
        write(name, 2);
    const auto result = scan();
    ASSERT_EQ(result.groups.size(), 2u);
    const auto report = run(
        result, {path("other/b.bin"), path("big/c.bin"), path("big/b.bin"), path("not/in/result")});
    const std::vector<std::string> moved = {path("big/b.bin"), path("big/c.bin"),
                                            path("other/b.bin")};
    ASSERT_EQ(report.outcomes.size(), 3u);
    for (size_t i = 0; i < moved.size(); ++i) {
        EXPECT_EQ(report.outcomes[i].path, moved[i]);
        EXPECT_EQ(report.outcomes[i].detail, "Moved to Trash");
        EXPECT_FALSE(test::exists(moved[i]));
    }
    EXPECT_EQ(report.title(), "Copies moved to Trash");
    EXPECT_EQ(report.logicalBytesMoved, 3 * size);
    EXPECT_EQ(progress_, (std::vector<std::pair<int64_t, int64_t>>{{1, 3}, {2, 3}, {3, 3}}));
    EXPECT_EQ(sinkCalls_, 1);
    EXPECT_EQ(changed_, moved);
    EXPECT_TRUE(test::exists(path("big/a.bin")));
    EXPECT_TRUE(test::exists(path("other/a.bin")));
    EXPECT_TRUE(test::trashListShows(test::trashList(), path("other/b.bin")));
}

TEST_F(DuplicateTrashExecutorTest, CachedKeeperIsTrustedWhileItsStatusIsUnchanged) {
    write("a.bin", 1);
    write("b.bin", 2);
    const auto result = scan();
    ASSERT_TRUE(result.groups.empty());
    const auto status = platform::statPath(path("a.bin"), false);
    ASSERT_TRUE(status);
    const DuplicateFile keeper = DuplicateFile::snapshot(path("a.bin"), *status);
    const auto otherDigest = DuplicateScanner::hash(
        DuplicateFile::snapshot(path("b.bin"), *platform::statPath(path("b.bin"), false)), false,
        ScanCancellation{});
    ASSERT_TRUE(otherDigest);
    // Without a cache a.bin is read and does not match b.bin's digest.
    std::optional<DuplicateFile> cached;
    EXPECT_FALSE(DuplicateTrashExecutor::hasVerifiedKeeper({keeper}, cached, *otherDigest));
    EXPECT_FALSE(cached);
    // A cached keeper is only looked at, not read again.
    cached = keeper;
    EXPECT_TRUE(DuplicateTrashExecutor::hasVerifiedKeeper({}, cached, *otherDigest));
    // Once it changes, the files are hashed again and the first match is cached.
    test::setModifiedTime(path("a.bin"), 1'000'000'000);
    const DuplicateFile match =
        DuplicateFile::snapshot(path("b.bin"), *platform::statPath(path("b.bin"), false));
    EXPECT_TRUE(DuplicateTrashExecutor::hasVerifiedKeeper({keeper, match}, cached, *otherDigest));
    EXPECT_EQ(cached, match);
}

}  // namespace
}  // namespace veldan
