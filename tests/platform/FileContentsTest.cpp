#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileContents.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::platform {
namespace {

using test::TempDir;

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
