// The recent files of a real Downloads folder in a temporary home, and moving one to a
// real Trash that trash-cli lists and restores.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <filesystem>

#include "activity/DownloadInventory.hpp"
#include "platform/FileStatus.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan {

namespace {

using Clock = std::chrono::system_clock;
using namespace std::chrono_literals;

void setModified(const std::string& path, Clock::time_point when) {
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(when.time_since_epoch()).count();
    const timeval times[2] = {{micros / 1'000'000, micros % 1'000'000},
                              {micros / 1'000'000, micros % 1'000'000}};
    if (::lutimes(path.c_str(), times) != 0) throw std::runtime_error("lutimes " + path);
}

std::vector<std::string> names(const std::vector<TrackedDownload>& downloads) {
    std::vector<std::string> out;
    for (const auto& d : downloads)
        out.push_back(std::filesystem::path(d.path).filename());
    return out;
}

}  // namespace

TEST(DownloadInventory, ListsOnlyRecentRegularFilesAtTheTopLevelMostRecentFirst) {
    test::IsolatedHome home;
    const std::string downloads = home / "Downloads";
    test::makeFolders(downloads + "/folder");
    test::writeFile(downloads + "/folder/inside.pdf", "x");
    test::writeFileOfSize(downloads + "/setup.deb", 20'000);
    test::writeFile(downloads + "/not-utf8-\xff\xfe.txt", "x");
    test::writeFile(downloads + "/.~lock.notes.odt#", "x");
    test::makeSymlink(downloads + "/setup.deb", downloads + "/link.deb");
    test::makeSymlink("/nowhere", downloads + "/dangling");
    ASSERT_EQ(::mkfifo((downloads + "/pipe").c_str(), 0600), 0);
    // Every file here was born now; "now" forty days on makes only what was modified
    // since then recent, which the modification times below decide.
    const auto later = Clock::now() + 40 * 24h;
    setModified(downloads + "/setup.deb", later - 1h);
    setModified(downloads + "/not-utf8-\xff\xfe.txt", later - 29 * 24h);

    const auto found = DownloadInventory::collect(later);
    EXPECT_EQ(names(found), (std::vector<std::string>{"setup.deb", "not-utf8-\xff\xfe.txt"}));
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found[0].path, downloads + "/setup.deb");
    EXPECT_EQ(found[0].bytes, test::allocatedBytes(downloads + "/setup.deb"));
    EXPECT_TRUE(found[0].isInstaller());
    EXPECT_FALSE(found[0].wantsReview(Clock::now())) << "an installer added today, small";
    EXPECT_TRUE(found[0].wantsReview(later)) << "the same installer forty days on";

    EXPECT_EQ(DownloadInventory::collect(Clock::now()).size(), 2u) << "added today counts too";
}

TEST(DownloadInventory, KeepsAt80AndFollowsTheConfiguredOrLinkedFolder) {
    test::IsolatedHome home;
    EXPECT_TRUE(DownloadInventory::collect(Clock::now()).empty()) << "no Downloads folder";

    const std::string elsewhere = home / "disk/Incoming \"files\"";
    test::makeFolders(elsewhere);
    for (int i = 0; i < 85; ++i)
        test::writeFile(elsewhere + "/file" + std::to_string(i), "x");
    test::makeFolders(home.configHome());
    test::writeFile(home.configHome() + "/user-dirs.dirs",
                    "# written by xdg-user-dirs-update\n"
                    "XDG_DOWNLOAD_DIR=\"$HOME/Old\"\n"
                    "XDG_DOWNLOAD_DIR=\"$HOME/link\"\n");
    test::makeSymlink(elsewhere, home / "link");
    const auto found = DownloadInventory::collect(Clock::now());
    EXPECT_EQ(found.size(), 80u);
    EXPECT_EQ(std::filesystem::path(found[0].path).parent_path(), elsewhere)
        << "paths name the folder with the link resolved";

    test::writeFile(home.configHome() + "/user-dirs.dirs",
                    "XDG_DOWNLOAD_DIR=\"" + home / "disk/Incoming \\\"files\\\"" + "\"\n");
    EXPECT_EQ(DownloadInventory::folder(), elsewhere) << "an absolute path with escapes";
}

TEST(DownloadInventory, AMoveIsRefusedUnlessTheListedFileIsStillThereUnchanged) {
    test::IsolatedHome home;
    const std::string downloads = home / "Downloads";
    test::makeFolders(downloads + "/sub");
    for (const char* name : {"kept.iso", "replaced.iso", "grown.iso", "sub/deep.iso"})
        test::writeFileOfSize(downloads + "/" + name, 10'000);
    auto listed = DownloadInventory::collect(Clock::now());
    auto find = [&](const std::string& name) {
        for (const auto& d : listed)
            if (d.path == downloads + "/" + name) return d;
        throw std::runtime_error("not listed: " + name);
    };

    // Replaced between listing and moving: the new file often gets the freed inode number
    // back, so only the birth time and the times tell them apart.
    std::filesystem::remove(downloads + "/replaced.iso");
    test::writeFileOfSize(downloads + "/replaced.iso", 10'000);
    test::writeFileOfSize(downloads + "/grown.iso", 10'001);
    auto deep = find("kept.iso");
    deep.path = downloads + "/sub/deep.iso";

    const struct {
        TrackedDownload download;
        std::string reason;
    } refusals[] = {{find("replaced.iso"), DownloadInventory::changedReason},
                    {find("grown.iso"), DownloadInventory::changedReason},
                    {deep, DownloadInventory::notInsideReason}};
    for (const auto& r : refusals) {
        const auto outcome = DownloadInventory::moveToTrash(r.download);
        EXPECT_FALSE(outcome.moved) << r.download.path;
        EXPECT_EQ(outcome.reason, r.reason) << r.download.path;
        EXPECT_TRUE(test::exists(r.download.path));
    }

    const auto moved = DownloadInventory::moveToTrash(find("kept.iso"));
    ASSERT_TRUE(moved.moved) << moved.reason;
    EXPECT_FALSE(test::exists(downloads + "/kept.iso"));
    EXPECT_TRUE(test::trashListShows(test::trashList(), downloads + "/kept.iso"));
    EXPECT_EQ(test::trashRestore(downloads + "/kept.iso").exitCode, 0);
    EXPECT_TRUE(test::exists(downloads + "/kept.iso"));
}

}  // namespace veldan
