#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileContents.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::platform {
namespace {

using test::TempDir;

std::vector<std::string> entryNames(const std::string& folder) {
    std::vector<std::string> names;
    DIR* dir = ::opendir(folder.c_str());
    while (auto* entry = dir ? ::readdir(dir) : nullptr) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    if (dir) ::closedir(dir);
    return names;
}

TEST(ReadRegularFile, ReadsUpToTheLimitAndNoFurther) {
    TempDir dir;
    test::writeFile(dir / "exact", std::string(100, 'a'));
    EXPECT_EQ(readRegularFile(dir / "exact", 100), std::string(100, 'a'));
    EXPECT_FALSE(readRegularFile(dir / "exact", 99));
    test::writeFile(dir / "empty", "");
    EXPECT_EQ(readRegularFile(dir / "empty", 0), "");
}

TEST(ReadRegularFile, IgnoresLinksFoldersAndMissingFiles) {
    TempDir dir;
    test::writeFile(dir / "target", "data");
    test::makeSymlink(dir / "target", dir / "link");
    test::makeFolders(dir / "folder");
    ASSERT_EQ(::mkfifo((dir / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE(readRegularFile(dir / "link", 100));
    EXPECT_FALSE(readRegularFile(dir / "folder", 100));
    EXPECT_FALSE(readRegularFile(dir / "fifo", 100));
    EXPECT_FALSE(readRegularFile(dir / "missing", 100));
}

TEST(ReplaceFileAtomically, ReplacesTheFileAndLeavesNoTemporary) {
    TempDir dir;
    test::writeFile(dir / "doc", "old");
    ASSERT_EQ(replaceFileAtomically(dir / "doc", "new contents", 0600), 0);
    EXPECT_EQ(test::readFile(dir / "doc"), "new contents");
    struct stat status {};
    ASSERT_EQ(::stat((dir / "doc").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(entryNames(dir.path()), std::vector<std::string>{"doc"});
}

TEST(ReplaceFileAtomically, FailsWithoutCreatingAnythingWhenTheFolderIsMissing) {
    TempDir dir;
    EXPECT_EQ(replaceFileAtomically(dir / "missing/doc", "new", 0600), ENOENT);
    EXPECT_FALSE(test::exists(dir / "missing"));
}

TEST(ReplaceFileAtomically, FailsOnAFolderInTheWayAndLeavesIt) {
    TempDir dir;
    test::makeFolders(dir / "doc/inside");
    EXPECT_NE(replaceFileAtomically(dir / "doc", "new", 0600), 0);
    EXPECT_TRUE(test::exists(dir / "doc/inside"));
    EXPECT_EQ(entryNames(dir.path()), std::vector<std::string>{"doc"});  // no temporary left
}

TEST(CreateFolders, CreatesPrivateParentsAndKeepsExistingModes) {
    TempDir dir;
    test::makeFolders(dir / "open");
    ASSERT_EQ(::chmod((dir / "open").c_str(), 0755), 0);
    ASSERT_EQ(createFolders(dir / "open/a/b", 0700), 0);
    struct stat status {};
    ASSERT_EQ(::stat((dir / "open/a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    ASSERT_EQ(::stat((dir / "open").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0755u);
    test::writeFile(dir / "file", "x");
    EXPECT_EQ(createFolders(dir / "file", 0700), ENOTDIR);
}

}  // namespace
}  // namespace veldan::platform
