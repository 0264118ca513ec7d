// `veldan activity`, `veldan status` and what scan, duplicates --trash and the download
// move leave in the history and the digest, run as real child processes.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "activity/ActivityTracker.hpp"
#include "cli/DailyTimer.hpp"
#include "scan/SizeText.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"

namespace veldan {

namespace {

using Json = nlohmann::json;

test::ProcessResult veldan(std::vector<std::string> args) {
    args.insert(args.begin(), test::veldanBinary());
    return test::runProcess(args);
}

Json jsonOf(std::vector<std::string> args) {
    const auto run = veldan(std::move(args));
    if (run.exitCode != 0 && run.exitCode != 1) throw std::runtime_error(run.err);
    return Json::parse(run.out);
}

// A complete scan of "/" needs a whole disk; in a private mount namespace a small tmpfs
// becomes "/" (with /usr and this build mounted beside it, on other devices the scan does
// not enter), and the commands run there.
constexpr const char* startupDiskScript = R"sh(
set -e
root=$1; binary=$2; folder=$(dirname "$binary")
mount -t tmpfs -o size=64m tmpfs "$root" || exit 77
mkdir -p "$root/usr" "$root/dev" "$root/proc" "$root/tmp" "$root$folder" "$root/home/u/Downloads"
for link in bin lib lib64 sbin; do ln -s "usr/$link" "$root/$link"; done
mount --bind /usr "$root/usr"
mount --bind /dev "$root/dev"
mount --bind "$folder" "$root$folder"
mount -t proc proc "$root/proc"
head -c 300000 /dev/zero > "$root/home/u/Downloads/tool.AppImage"
exec chroot "$root" /usr/bin/env -i HOME=/home/u NO_COLOR=1 /bin/sh -c "
  '$binary' scan / > /dev/null &&
  '$binary' activity daily on --json > /dev/null &&
  '$binary' activity check &&
  '$binary' activity --json &&
  '$binary' status --waybar"
)sh";

}  // namespace

TEST(ActivityCommand, ACompleteScanOfTheStartupDiskRecordsTheDayAndTheDownloads) {
    test::TempDir root;
    const auto run = test::runProcess({"unshare", "-m", "--propagation", "private", "sh", "-c",
                                       startupDiskScript, "sh", root.path(), test::veldanBinary()});
    if (run.exitCode == 77 || run.err.find("unshare failed") != std::string::npos) {
        GTEST_SKIP() << "mount namespaces are not available here: " << run.err;
    }
    ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
    std::istringstream lines(run.out);
    std::string notDue, activity, waybar;
    std::getline(lines, notDue);
    std::getline(lines, activity);
    std::getline(lines, waybar);
    EXPECT_EQ(notDue.rfind("Nothing to do: the last check was ", 0), 0u) << notDue;

    const auto history = Json::parse(activity);
    ASSERT_EQ(history["snapshots"].size(), 1u) << activity;
    EXPECT_GT(history["snapshots"][0]["freeBytes"], 0);
    EXPECT_GT(history["snapshots"][0]["mappedBytes"], 300'000);
    ASSERT_EQ(history["downloads"].size(), 1u);
    EXPECT_EQ(history["downloads"][0]["path"], "/home/u/Downloads/tool.AppImage");
    EXPECT_EQ(history["downloads"][0]["isInstaller"], true);
    EXPECT_EQ(history["dailyEnabled"], true);
    EXPECT_FALSE(history["lastDailyCheckAt"].is_null());

    const auto bar = Json::parse(waybar);
    EXPECT_EQ(bar["class"], "ok");
    EXPECT_NE(bar["tooltip"].get<std::string>().find("Startup disk: "), std::string::npos);
    EXPECT_GE(bar["percentage"], 0);
}

TEST(ActivityCommand, AFolderScanAndADuplicateMoveUpdateTheDigestButAddNoSnapshot) {
    test::IsolatedHome home;
    const std::string dir = home / "Photos";
    test::makeFolders(dir + "/copy");
    test::writeFileOfSize(dir + "/a.jpg", 1'200'000);
    test::writeFileOfSize(dir + "/copy/a.jpg", 1'200'000);
    EXPECT_EQ(veldan({"status"}).out, "No map yet; run veldan scan to make one.\n");

    ASSERT_EQ(veldan({"scan", dir}).exitCode, 0);
    auto digest = jsonOf({"status", "--json"});
    EXPECT_EQ(digest["scopeName"], "Photos");
    EXPECT_EQ(digest["scopePath"], dir);
    EXPECT_EQ(digest["hasCompletedScan"], true);
    EXPECT_TRUE(digest["scanState"].is_null());
    EXPECT_EQ(digest["mappedBytes"], 2 * test::allocatedBytes(dir + "/a.jpg"));
    EXPECT_EQ(jsonOf({"status", "--waybar"})["class"], "ok");

    const auto moved = veldan({"duplicates", "--trash", "--yes", dir});
    ASSERT_EQ(moved.exitCode, 0) << moved.err;
    const auto history = jsonOf({"activity", "--json"});
    EXPECT_TRUE(history["snapshots"].empty());
    EXPECT_TRUE(history["lastDailyCheckAt"].is_null()) << "only a scan of / or the daily check";
    ASSERT_EQ(history["activities"].size(), 1u);
    EXPECT_EQ(history["activities"][0]["title"], "Duplicate copies");
    EXPECT_EQ(history["activities"][0]["count"], 1);
    EXPECT_EQ(history["totalMovedToTrashBytes"], 1'200'000);
    digest = jsonOf({"status", "--json"});
    EXPECT_EQ(digest["needsRefresh"], true);
    EXPECT_EQ(digest["movedToTrashBytes"], 1'200'000);
    EXPECT_EQ(jsonOf({"status", "--waybar"})["class"], "outdated");

    const auto text = veldan({"activity"});
    EXPECT_NE(text.out.find("Duplicate copies \u2014 " + SizeText::string(1'200'000) +
                            " in 1 item moved to Trash"),
              std::string::npos)
        << text.out;
    EXPECT_NE(text.out.find(ActivityTracker::recordedLocallyNote), std::string::npos);
}

TEST(ActivityCommand, ADownloadReplacedAfterListingStaysAndAnUnchangedOneMoves) {
    test::IsolatedHome home;
    const std::string downloads = home / "Downloads";
    test::makeFolders(downloads);
    test::writeFileOfSize(downloads + "/movie.mkv", 50'000);
    test::writeFileOfSize(downloads + "/setup.run", 20'000);
    {
        ActivityTracker tracker;
        ScanSnapshot daily;
        daily.root.path = home.home();
        const auto now = std::chrono::system_clock::now();
        tracker.recordScan(daily, DownloadInventory::collect(now), now);
    }
    std::filesystem::remove(downloads + "/setup.run");
    test::writeFileOfSize(downloads + "/setup.run", 20'000);

    auto refused =
        jsonOf({"activity", "trash-download", "--yes", "--json", downloads + "/setup.run"});
    EXPECT_EQ(refused["moved"], false);
    EXPECT_EQ(refused["error"]["domain"], "VeldanTracker");
    EXPECT_EQ(refused["error"]["message"], DownloadInventory::changedReason);
    EXPECT_TRUE(test::exists(downloads + "/setup.run"));
    EXPECT_EQ(veldan({"activity", "trash-download", downloads + "/movie.mkv"}).exitCode, 1)
        << "no confirmation without a terminal or --yes";

    const auto moved = veldan({"activity", "trash-download", "--yes", downloads + "/movie.mkv"});
    ASSERT_EQ(moved.exitCode, 0) << moved.err;
    EXPECT_TRUE(test::trashListShows(test::trashList(), downloads + "/movie.mkv"));
    const auto history = jsonOf({"activity", "--json"});
    ASSERT_EQ(history["activities"].size(), 1u);
    EXPECT_EQ(history["activities"][0]["title"], "movie.mkv");
    EXPECT_EQ(history["downloads"].size(), 1u) << "the moved one left the list";
}

TEST(ActivityCommand, TheDailyCheckSaysWhyItDidNothingAndItsUnitsVerify) {
    test::IsolatedHome home;
    auto check = veldan({"activity", "check"});
    EXPECT_EQ(check.exitCode, 0);
    EXPECT_NE(check.out.find("The daily check is off"), std::string::npos) << check.out;
    auto on = jsonOf({"activity", "daily", "on", "--json"});
    EXPECT_EQ(on["dailyEnabled"], true);
    EXPECT_NE(on["timer"], "enabled") << "never enabled without being asked";
    EXPECT_EQ(jsonOf({"activity", "--json"})["isDailyCheckDue"], true);
    EXPECT_EQ(jsonOf({"activity", "daily", "off", "--json"})["dailyEnabled"], false);

    if (::access("/usr/bin/systemd-analyze", X_OK) != 0) GTEST_SKIP() << "no systemd-analyze";
    const std::string units = home / "units";
    test::makeFolders(units);
    test::makeFolders(home / "runtime");
    test::writeFile(units + "/veldan-activity.service",
                    cli::DailyTimer::serviceUnitFor(test::veldanBinary()));
    std::filesystem::copy_file(VELDAN_SOURCE_DIR "/packaging/systemd/veldan-activity.timer",
                               units + "/veldan-activity.timer");
    test::ProcessOptions options;
    options.environment["XDG_RUNTIME_DIR"] = home / "runtime";
    const auto verify =
        test::runProcess({"systemd-analyze", "--user", "verify", units + "/veldan-activity.timer",
                          units + "/veldan-activity.service"},
                         options);
    EXPECT_EQ(verify.exitCode, 0) << verify.err;
    EXPECT_EQ(verify.err, "") << "no complaint about either unit";
}

}  // namespace veldan
