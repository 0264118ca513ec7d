// The rules that keep the activity history small, and its file format.

#include <gtest/gtest.h>

#include <ctime>

#include "activity/ActivityArchive.hpp"
#include "activity/ActivityArchiveCodec.hpp"
#include "tests/cache/LibplistEdit.hpp"

namespace veldan {

namespace {

using Clock = std::chrono::system_clock;
using namespace std::chrono_literals;

// Local noon of the day `days` after 1 March 2026: far from midnight, so the day is the
// same in every time zone rule the test machine may use.
Clock::time_point noonOfDay(int days, std::chrono::minutes plus = 0min) {
    std::tm day{};
    day.tm_year = 2026 - 1900;
    day.tm_mon = 2;
    day.tm_mday = 1 + days;
    day.tm_hour = 12;
    day.tm_isdst = -1;
    return Clock::from_time_t(std::mktime(&day)) + plus;
}

ActivitySnapshot snapshotOn(Clock::time_point at, int64_t freeBytes) {
    return ActivitySnapshot{at, freeBytes, freeBytes / 2, 0};
}

CleanupActivity trashed(std::string title, int64_t bytes, int64_t count) {
    return CleanupActivity{
        "id-" + title, noonOfDay(0), std::move(title), CleanupActivity::Kind::movedToTrash,
        bytes,         count};
}

}  // namespace

TEST(ActivityArchive, TheSameDayTwiceKeepsOnlyTheLaterSnapshot) {
    ActivityArchive archive;
    archive.recordScan(snapshotOn(noonOfDay(0), 100), {}, noonOfDay(0));
    archive.recordScan(snapshotOn(noonOfDay(0, 90min), 80), {}, noonOfDay(0, 90min));
    ASSERT_EQ(archive.snapshots.size(), 1u);
    EXPECT_EQ(archive.snapshots[0].freeBytes, 80);
    EXPECT_EQ(archive.lastDailyCheckAt, noonOfDay(0, 90min));
    EXPECT_FALSE(archive.latestChangeInFreeSpace()) << "one day has no previous check";

    archive.recordScan(snapshotOn(noonOfDay(1), 50), {}, noonOfDay(1));
    EXPECT_EQ(archive.latestChangeInFreeSpace(), -30);
}

TEST(ActivityArchive, The61stDayAndThe101stActivityDropTheOldest) {
    ActivityArchive archive;
    for (int day = 0; day < 61; ++day)
        archive.recordScan(snapshotOn(noonOfDay(day), day), {}, noonOfDay(day));
    ASSERT_EQ(archive.snapshots.size(), 60u);
    EXPECT_EQ(archive.snapshots.front().freeBytes, 1) << "day 0 dropped";
    EXPECT_EQ(archive.snapshots.back().freeBytes, 60);

    for (int i = 0; i < 101; ++i)
        ASSERT_TRUE(archive.recordCleanup(trashed(std::to_string(i), 10, 1)));
    ASSERT_EQ(archive.activities.size(), 100u);
    EXPECT_EQ(archive.activities.front().title, "100") << "newest first";
    EXPECT_EQ(archive.activities.back().title, "1") << "the first one dropped";
    EXPECT_EQ(archive.totalMovedToTrashItems, 101) << "totals count every move, kept or not";
    EXPECT_EQ(archive.totalMovedToTrashBytes, 1010);
}

TEST(ActivityArchive, ACountOfZeroChangesNothingAndTotalsSaturate) {
    ActivityArchive archive;
    EXPECT_FALSE(archive.recordCleanup(trashed("none", 5'000, 0)));
    EXPECT_FALSE(archive.recordCleanup(trashed("negative", 5'000, -3)));
    EXPECT_EQ(archive, ActivityArchive{});

    ASSERT_TRUE(archive.recordCleanup(trashed("huge", INT64_MAX - 1, 1)));
    ASSERT_TRUE(archive.recordCleanup(trashed("more", 10, 1)));
    EXPECT_EQ(archive.totalMovedToTrashBytes, INT64_MAX);

    auto tool = trashed("brew", 999, 1);
    tool.kind = CleanupActivity::Kind::toolCleanup;
    ASSERT_TRUE(archive.recordCleanup(tool));
    EXPECT_EQ(archive.totalToolCleanups, 1);
    EXPECT_EQ(archive.activities.front().bytes, 0) << "a tool's savings are not guessed";
    EXPECT_EQ(archive.totalMovedToTrashItems, 2);
}

TEST(ActivityArchive, AClockSetBackStillKeepsTheChartInDateOrder) {
    ActivityArchive archive;
    archive.recordScan(snapshotOn(noonOfDay(10), 10), {}, noonOfDay(10));
    archive.recordScan(snapshotOn(noonOfDay(3), 3), {}, noonOfDay(3));
    ASSERT_EQ(archive.snapshots.size(), 2u);
    EXPECT_EQ(archive.snapshots[0].freeBytes, 3);
    EXPECT_EQ(archive.snapshots[1].freeBytes, 10);
    EXPECT_EQ(archive.lastDailyCheckAt, noonOfDay(3)) << "the last check is the last one made";
}

TEST(ActivityArchiveCodec, EveryFieldSurvivesAndDamagedOrNewerFilesKeepWhatTheyCan) {
    ActivityArchive archive;
    archive.recordScan(snapshotOn(noonOfDay(0), 1234), {}, noonOfDay(0));
    TrackedDownload download;
    download.path = "/home/u/Downloads/caf\xc3\xa9 \xff\xfe.deb";
    download.bytes = 8192;
    download.addedAt = noonOfDay(0) + 123456us;
    download.modifiedAt = noonOfDay(-3);
    download.device = UINT64_MAX - 5;  // unsigned values beyond the signed range
    download.inode = 42;
    download.size = 8000;
    download.created = {1'700'000'000, 999'999'999};
    download.modified = {1'600'000'000, 1};
    archive.downloads = {download};
    archive.recordCleanup(trashed("npm \"cache\"", 77, 3));
    const std::string file = ActivityArchiveCodec::encode(archive);

    auto decoded = ActivityArchiveCodec::decode(file);
    EXPECT_EQ(decoded.status, DecodedActivityArchive::Status::current);
    EXPECT_EQ(decoded.archive, archive);

    for (size_t cut : {size_t(0), size_t(8), file.size() / 2, file.size() - 1}) {
        auto truncated = ActivityArchiveCodec::decode(std::string_view(file).substr(0, cut));
        EXPECT_EQ(truncated.status, DecodedActivityArchive::Status::damaged) << cut;
        EXPECT_EQ(truncated.archive, ActivityArchive{}) << cut;
    }

    // libplist, an independent encoder, writes what a newer version might: a larger number
    // and a key this version does not know. It is read, and marked so that it is never
    // overwritten.
    const std::string newer = test::editWithLibplist(file, [](plist_t root) {
        plist_dict_set_item(root, "version", plist_new_uint(7));
        plist_dict_set_item(root, "laterKey", plist_new_string("later"));
    });
    ASSERT_FALSE(newer.empty()) << "libplist reads the file";
    auto future = ActivityArchiveCodec::decode(newer);
    EXPECT_EQ(future.status, DecodedActivityArchive::Status::newer);
    EXPECT_EQ(future.archive, archive);
}

}  // namespace veldan
