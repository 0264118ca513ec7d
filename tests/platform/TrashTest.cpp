// Moving items to the home Trash, checked with the files on disk and with trash-cli.

#include "platform/Trash.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>

#include "platform/Paths.hpp"
#include "platform/TrashInfo.hpp"
#include "platform/UniqueFd.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

using platform::Trash;

struct HomeTrash {
    test::IsolatedHome home;
    std::string folder() const { return home.dataHome() + "/Trash"; }
    std::string file(const std::string& name) const { return folder() + "/files/" + name; }
    std::string info(const std::string& name) const {
        return test::readFile(folder() + "/info/" + name + ".trashinfo");
    }
};

platform::ItemIdentity identityOf(const std::string& path) {
    auto status = platform::statPath(path, false);
    if (!status) throw std::runtime_error("lstat " + path);
    return platform::ItemIdentity::of(*status);
}

void makeProject(const std::string& folder) {
    test::makeFolders(folder + "/inner/deeper");
    test::writeFileOfSize(folder + "/inner/deeper/data.bin", 20000, 3);
    test::writeFile(folder + "/top.txt", "top");
}

void expectSameProject(const std::string& folder) {
    EXPECT_EQ(test::readFile(folder + "/top.txt"), "top");
    EXPECT_EQ(test::allocatedBytes(folder + "/inner/deeper/data.bin") > 0, true);
    EXPECT_EQ(test::readFile(folder + "/inner/deeper/data.bin").size(), 20000u);
}

}  // namespace

TEST(TrashInfoText, EncodesEveryByteOutsideTheUnreservedSetAndWritesLocalTime) {
    EXPECT_EQ(platform::percentEncodePath("/a b/%c/\xff\n'\"é-_.~Z9"),
              "/a%20b/%25c/%FF%0A%27%22%C3%A9-_.~Z9");
    const std::string text = platform::trashInfoText("/x y", 0);
    EXPECT_TRUE(std::regex_match(
        text,
        std::regex(
            "\\[Trash "
            "Info\\]\nPath=/x%20y\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")))
        << text;
}

TEST(HomeTrash, MovesAFolderWithItsInfoFileAndDirectorySizeAndTrashCliRestoresItWhole) {
    HomeTrash trash;
    test::TempDir dir;
    const std::string item = dir / "my project";
    makeProject(item);
    const auto outcome = Trash::moveItem(item, {identityOf(item)});
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    EXPECT_EQ(outcome.trashedPath, trash.file("my project"));
    EXPECT_FALSE(test::exists(item));
    expectSameProject(trash.file("my project"));

    struct stat infoStatus {};
    ASSERT_EQ(::stat((trash.folder() + "/info/my project.trashinfo").c_str(), &infoStatus), 0);
    EXPECT_EQ(infoStatus.st_mode & 0777, 0600u);
    struct stat trashStatus {};
    ASSERT_EQ(::stat(trash.folder().c_str(), &trashStatus), 0);
    EXPECT_EQ(trashStatus.st_mode & 0777, 0700u);

    // du -B1 of the trashed folder, the modification time of its info file, the name.
    const auto du = test::runProcess({"du", "-s", "-B1", trash.file("my project")});
    const std::string sizes = test::readFile(trash.folder() + "/directorysizes");
    EXPECT_EQ(sizes, du.out.substr(0, du.out.find('\t')) + " " +
                         std::to_string(infoStatus.st_mtim.tv_sec) + " my%20project\n");

    EXPECT_TRUE(test::trashListShows(test::trashList(), item));
    const auto restored = test::trashRestore(item);
    ASSERT_EQ(restored.exitCode, 0) << restored.err;
    expectSameProject(item);
    EXPECT_FALSE(test::exists(trash.file("my project")));
}

TEST(HomeTrash, GivesASecondItemOfTheSameNameItsOwnNameAndBothComeBack) {
    HomeTrash trash;
    test::TempDir dir;
    test::makeFolders(dir / "one");
    test::makeFolders(dir / "two");
    test::writeFile(dir / "one/same", "first");
    test::writeFile(dir / "two/same", "second");
    ASSERT_TRUE(Trash::moveItem(dir / "one/same").moved);
    const auto second = Trash::moveItem(dir / "two/same");
    ASSERT_TRUE(second.moved) << second.reason;
    EXPECT_EQ(second.trashedPath, trash.file("same.2"));
    EXPECT_FALSE(test::exists(trash.folder() + "/directorysizes")) << "files have no size entry";

    const std::string listing = test::trashList();
    EXPECT_TRUE(test::trashListShows(listing, dir / "one/same"));
    EXPECT_TRUE(test::trashListShows(listing, dir / "two/same"));
    ASSERT_EQ(test::trashRestore(dir / "two").exitCode, 0);
    ASSERT_EQ(test::trashRestore(dir / "one").exitCode, 0);
    EXPECT_EQ(test::readFile(dir / "one/same"), "first");
    EXPECT_EQ(test::readFile(dir / "two/same"), "second");
}

TEST(HomeTrash, KeepsANameWithALineBreakExactAndTrashCliRestoresIt) {
    HomeTrash trash;
    test::TempDir dir;
    const std::string item = dir / "new\nline -dash 'q' $(x) `y`";
    makeProject(item);
    ASSERT_TRUE(Trash::moveItem(item).moved);
    const std::string info = trash.info("new\nline -dash 'q' $(x) `y`");
    EXPECT_EQ(std::count(info.begin(), info.end(), '\n'), 3) << "the name's line break is encoded";
    EXPECT_TRUE(test::trashListShows(test::trashList(), item));
    ASSERT_EQ(test::trashRestore(item).exitCode, 0);
    expectSameProject(item);
}

// trash-cli 0.17 (Debian 12) decodes Path= as UTF-8 with replacement characters, so it
// lists and restores an invalid byte as U+FFFD; the info file itself keeps the bytes.
TEST(HomeTrash, KeepsTheExactBytesOfANameThatIsNotUtf8) {
    HomeTrash trash;
    test::TempDir dir;
    const std::string item = dir / "bad\xff\xfe name";
    makeProject(item);
    ASSERT_TRUE(Trash::moveItem(item).moved);
    EXPECT_EQ(test::percentDecode(test::trashInfoValue(trash.info("bad\xff\xfe name"), "Path")),
              item);
    expectSameProject(trash.file("bad\xff\xfe name"));

    const std::string shownByTrashCli = dir / "bad\xef\xbf\xbd\xef\xbf\xbd name";
    EXPECT_TRUE(test::trashListShows(test::trashList(), shownByTrashCli));
    ASSERT_EQ(test::trashRestore(dir.path()).exitCode, 0);
    expectSameProject(shownByTrashCli);
}

TEST(HomeTrash, ShortensAVeryLongNameInsideTheTrashButKeepsItWholeInPath) {
    HomeTrash trash;
    test::TempDir dir;
    // 125 two-byte characters: 250 bytes, too long once ".trashinfo" is added.
    std::string name;
    for (int i = 0; i < 125; ++i)
        name += "\xc3\xa9";
    const std::string item = dir / name;
    test::writeFile(item, "long");
    const auto outcome = Trash::moveItem(item);
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    const std::string stored(platform::lastPathComponent(outcome.trashedPath));
    EXPECT_EQ(stored, name.substr(0, 244));
    ASSERT_EQ(test::trashRestore(item).exitCode, 0);
    EXPECT_EQ(test::readFile(item), "long");

    // A long name with no UTF-8 in it at all is cut where the room ends.
    const std::string bytes = dir / std::string(250, '\x80');
    test::writeFile(bytes, "bytes");
    const auto cut = Trash::moveItem(bytes);
    ASSERT_TRUE(cut.moved) << cut.reason;
    EXPECT_EQ(platform::lastPathComponent(cut.trashedPath), std::string(245, '\x80'));
}

// A folder deleted and made again usually gets its inode number back; only the birth
// time tells it from the one that was measured.
TEST(HomeTrash, RefusesAnItemThatIsNotTheExpectedOneAndLeavesNoInfoFile) {
    HomeTrash trash;
    test::TempDir dir;
    test::makeFolders(dir / "target/inner");
    const auto measured = identityOf(dir / "target");
    test::recreateWithSameInode(dir / "target");
    const auto outcome = Trash::moveItem(dir / "target", {measured});
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.refusal, platform::TrashRefusal::changed);
    EXPECT_EQ(outcome.reason, "The item changed just before the move, so it stayed in place.");
    EXPECT_TRUE(test::exists(dir / "target"));
    EXPECT_FALSE(test::exists(trash.folder() + "/info")) << "refused before any info file";

    // Touched only, it is still the same folder; unless the move asks for it unchanged.
    const auto now = identityOf(dir / "target");
    test::writeFile(dir / "target/new", "x");
    EXPECT_EQ(Trash::moveItem(dir / "target", {now, platform::IdentityCheck::unchanged}).refusal,
              platform::TrashRefusal::changed);
    EXPECT_TRUE(Trash::moveItem(dir / "target", {now}).moved);
}

TEST(HomeTrash, PutsBackAnEntrySwappedInJustBeforeTheRenameAndLeavesNoInfoFile) {
    HomeTrash trash;
    test::TempDir dir;
    test::makeFolders(dir / "target");
    test::writeFile(dir / "target/mine", "measured");
    int error = 0;
    auto parentFd = platform::openDirectory(dir.path(), error);
    ASSERT_TRUE(parentFd);
    const auto outcome =
        Trash::moveItem(parentFd.get(), dir.path(), "target",
                        {identityOf(dir / "target"), platform::IdentityCheck::sameItem, [&] {
                             ::rename((dir / "target").c_str(), (dir / "aside").c_str());
                             test::makeFolders(dir / "target");
                             test::writeFile(dir / "target/stranger", "other");
                         }});
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.reason,
              "The item was replaced just before the move, so nothing was moved to Trash.");
    EXPECT_EQ(test::readFile(dir / "target/stranger"), "other");
    EXPECT_EQ(test::readFile(dir / "aside/mine"), "measured");
    EXPECT_TRUE(std::filesystem::is_empty(trash.folder() + "/files"));
    EXPECT_TRUE(std::filesystem::is_empty(trash.folder() + "/info"));
    EXPECT_EQ(test::trashList(), "");
}

TEST(HomeTrash, RefusesWhenTheParentPathNoLongerNamesTheOpenFolder) {
    HomeTrash trash;
    test::TempDir dir;
    test::makeFolders(dir / "parent/item");
    int error = 0;
    auto parentFd = platform::openDirectory(dir / "parent", error);
    ASSERT_TRUE(parentFd);
    // The folder is swapped for a link to a look-alike after it was opened.
    ::rename((dir / "parent").c_str(), (dir / "moved").c_str());
    test::makeFolders(dir / "decoy/item");
    test::makeSymlink(dir / "decoy", dir / "parent");
    const auto outcome = Trash::moveItem(parentFd.get(), dir / "parent", "item");
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.reason, "The folder that holds the item changed, so it stayed in place.");
    // By path, the link on the way is refused before anything is opened through it.
    EXPECT_EQ(Trash::moveItem(dir / "parent/item").refusal, platform::TrashRefusal::redirected);
    EXPECT_TRUE(test::exists(dir / "moved/item"));
    EXPECT_TRUE(test::exists(dir / "decoy/item"));
}

TEST(HomeTrash, RefusesNamesThatAreNotASingleComponentAndMissingItems) {
    HomeTrash trash;
    test::TempDir dir;
    int error = 0;
    auto parentFd = platform::openDirectory(dir.path(), error);
    for (const std::string name : {"", ".", "..", "a/b"}) {
        const auto outcome = Trash::moveItem(parentFd.get(), dir.path(), name);
        EXPECT_FALSE(outcome.moved) << name;
        EXPECT_EQ(outcome.reason, "Only a named item inside a folder can be moved to Trash.");
    }
    EXPECT_EQ(Trash::moveItem(dir / "missing").reason,
              "The item no longer exists, so nothing was moved to Trash.");
    EXPECT_FALSE(Trash::moveItem("/").moved);
}

TEST(HomeTrash, MovesASymbolicLinkItselfNeverItsTarget) {
    HomeTrash trash;
    test::TempDir dir;
    test::makeFolders(dir / "real");
    test::writeFile(dir / "real/keep", "keep");
    test::makeSymlink(dir / "real", dir / "link");
    ASSERT_TRUE(Trash::moveItem(dir / "link").moved);
    EXPECT_FALSE(test::exists(dir / "link"));
    EXPECT_EQ(test::readFile(dir / "real/keep"), "keep");
}

}  // namespace veldan
