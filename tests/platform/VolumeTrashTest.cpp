// Items on another mount than the home Trash go to that mount's own Trash, and an item
// with a mount inside never moves. The mounts are made inside a private mount namespace.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/MountPoints.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/UserFolders.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/MountNamespace.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

using test::Mount;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) throw std::runtime_error("lstat " + path);
    return status.st_mode;
}

std::string uid() {
    return std::to_string(::getuid());
}

// A folder holding one file, the shape every item moved here has.
std::string makeItem(const std::string& path, const std::string& contents) {
    test::makeFolders(path);
    test::writeFile(path + "/file", contents);
    return path;
}

void expectListedAndRestored(const std::string& item, const std::string& contents) {
    EXPECT_TRUE(test::trashListShows(test::trashList(), item)) << test::trashList();
    const auto restored = test::trashRestore(item);
    ASSERT_EQ(restored.exitCode, 0) << restored.err;
    EXPECT_EQ(test::readFile(item + "/file"), contents);
}

using VolumeTrashInside = test::InsideMountNamespace;

}  // namespace

TEST(VolumeTrash, AllCasesPassInAPrivateMountNamespace) {
    test::runInMountNamespace("VolumeTrashInside", 7);
}

TEST_F(VolumeTrashInside, DISABLED_UsesTrashDashUidCreatedPrivateWithARelativePath) {
    Mount volume;
    const auto outcome = platform::Trash::moveItem(makeItem(volume / "sub/item", "on the volume"));
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    const std::string trash = volume / (".Trash-" + uid());
    EXPECT_EQ(outcome.trashedPath, trash + "/files/item");
    EXPECT_EQ(modeOf(trash) & 07777, 0700u);
    EXPECT_EQ(test::trashInfoValue(test::readFile(trash + "/info/item.trashinfo"), "Path"),
              "sub/item");
    EXPECT_TRUE(test::exists(trash + "/directorysizes"));
    expectListedAndRestored(volume / "sub/item", "on the volume");
}

TEST_F(VolumeTrashInside, DISABLED_UsesTheSharedStickyTrashFolder) {
    Mount volume;
    test::makeFolders(volume / ".Trash");
    ::chmod((volume / ".Trash").c_str(), 01777);
    const auto outcome = platform::Trash::moveItem(makeItem(volume / "item", "shared"));
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    EXPECT_EQ(outcome.trashedPath, volume / (".Trash/" + uid() + "/files/item"));
    EXPECT_FALSE(test::exists(volume / (".Trash-" + uid())));
    expectListedAndRestored(volume / "item", "shared");
}

TEST_F(VolumeTrashInside, DISABLED_IgnoresASharedTrashThatIsNotStickyOrIsALink) {
    Mount volume;
    test::makeFolders(volume / ".Trash");
    ::chmod((volume / ".Trash").c_str(), 0777);
    ASSERT_TRUE(platform::Trash::moveItem(makeItem(volume / "first", "1")).moved);
    EXPECT_TRUE(test::exists(volume / (".Trash-" + uid() + "/files/first")));

    Mount linked;
    test::makeFolders(linked / "elsewhere");
    ::chmod((linked / "elsewhere").c_str(), 01777);
    test::makeSymlink(linked / "elsewhere", linked / ".Trash");
    ASSERT_TRUE(platform::Trash::moveItem(makeItem(linked / "second", "2")).moved);
    EXPECT_TRUE(test::exists(linked / (".Trash-" + uid() + "/files/second")));
    EXPECT_FALSE(test::exists(linked / ("elsewhere/" + uid())));
    expectListedAndRestored(volume / "first", "1");
    expectListedAndRestored(linked / "second", "2");
}

TEST_F(VolumeTrashInside, DISABLED_RefusesOnAReadOnlyVolumeAndNeverCopies) {
    Mount volume;
    makeItem(volume / "item", "stays");
    volume.makeReadOnly();
    const auto outcome = platform::Trash::moveItem(volume / "item");
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.reason,
              "No usable Trash exists on the file system that holds the item (Read-only file "
              "system), so it stayed in place.");
    EXPECT_EQ(test::readFile(volume / "item/file"), "stays");
    EXPECT_EQ(test::trashList(), "") << "nothing reached the home Trash either";
}

TEST_F(VolumeTrashInside, DISABLED_RemovesTheInfoFileWhenTheRenameFails) {
    Mount volume;
    makeItem(volume / "busy", "stays");
    // A mount point cannot be renamed: one made after the last check fails the rename
    // after the info file was written.
    std::optional<Mount> over;
    const auto outcome = platform::Trash::moveItem(
        volume / "busy", {std::nullopt, platform::IdentityCheck::sameItem,
                          [&] { over.emplace(volume / "busy", volume / "busy"); }});
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.reason, "Could not move the item to Trash (Device or resource busy).");
    EXPECT_TRUE(test::exists(volume / (".Trash-" + uid() + "/info")));
    EXPECT_FALSE(test::exists(volume / (".Trash-" + uid() + "/info/busy.trashinfo")));
    over.reset();
    EXPECT_EQ(test::readFile(volume / "busy/file"), "stays");
}

// Renaming a folder carries what is mounted inside it along, and emptying the Trash would
// then delete files that were never measured: a tmpfs deep inside, a bind mount of the
// same file system, or the item itself being a mount point.
TEST_F(VolumeTrashInside, DISABLED_NeverMovesAnItemThatHoldsAMountAndLeavesNoInfoFile) {
    test::TempDir dir;
    const std::string elsewhere = makeItem(dir / "elsewhere", "never measured");
    const std::string deep = makeItem(dir / "deep", "own");
    test::makeFolders(deep + "/a/b");
    const std::string bound = makeItem(dir / "bound", "own");
    test::makeFolders(bound + "/sub");
    const std::string itself = makeItem(dir / "itself", "own");
    Mount tmpfs;
    Mount deepMount(tmpfs.top(), deep + "/a/b");
    Mount boundMount(elsewhere, bound + "/sub");
    Mount itselfMount(elsewhere, itself);
    for (const auto& item : {deep, bound, itself}) {
        const auto outcome = platform::Trash::moveItem(item);
        EXPECT_FALSE(outcome.moved) << item;
        EXPECT_EQ(outcome.refusal, platform::TrashRefusal::holdsMount);
        EXPECT_EQ(outcome.reason, platform::holdsMountReason);
        EXPECT_TRUE(test::exists(item + "/file")) << item;
    }
    EXPECT_EQ(test::readFile(elsewhere + "/file"), "never measured");
    const std::string info = platform::dataHome() + "/Trash/info";
    EXPECT_TRUE(!test::exists(info) || std::filesystem::is_empty(info));
}

// A bind mount of the home file system is another mount: a rename cannot leave it, so
// its items go to its own Trash, where trash-cli finds them.
TEST_F(VolumeTrashInside, DISABLED_AnItemUnderABindMountOfTheHomeFileSystemUsesThatMountsTrash) {
    test::TempDir source;
    test::TempDir target;
    Mount bind(source.path(), target.path());
    const auto outcome = platform::Trash::moveItem(makeItem(target / "item", "bound"));
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    EXPECT_EQ(outcome.trashedPath, target / (".Trash-" + uid() + "/files/item"));
    expectListedAndRestored(target / "item", "bound");
}

}  // namespace veldan
