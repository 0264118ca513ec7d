#include "platform/DirectoryWithoutLinks.hpp"

#include <gtest/gtest.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/FileStatus.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::platform {
namespace {

bool opensAs(const std::string& path, const std::string& expected) {
    int error = 0;
    const UniqueFd fd = openDirectoryWithoutLinks(path, error);
    if (!fd) return false;
    const auto opened = statDescriptor(fd.get(), error);
    const auto named = statPath(expected);
    return opened && named && opened->device == named->device && opened->inode == named->inode;
}

TEST(DirectoryWithoutLinksTest, OpensTheFolderThatThePathNames) {
    test::TempDir dir;
    test::makeFolders(dir / "a/b");
    EXPECT_TRUE(opensAs(dir / "a/b", dir / "a/b"));
    EXPECT_TRUE(opensAs("/", "/"));
}

TEST(DirectoryWithoutLinksTest, RefusesALinkAnywhereOnThePath) {
    test::TempDir dir;
    test::makeFolders(dir / "a/b");
    test::makeSymlink(dir / "a", dir / "link");
    for (const std::string& path : {dir / "link/b", dir / "link"}) {
        int error = 0;
        EXPECT_FALSE(openDirectoryWithoutLinks(path, error)) << path;
        EXPECT_TRUE(error == ELOOP || error == ENOTDIR) << path << ": " << error;
    }
    int error = 0;
    EXPECT_FALSE(openDirectoryWithoutLinks("relative/a", error));
    EXPECT_EQ(error, EINVAL);
}

// Re-runs this test as "nobody" (root may open any folder whatever its mode): a folder on
// the way that may be passed through but not listed does not stop the open.
TEST(DirectoryWithoutLinksTest, NeedsOnlySearchPermissionOnTheWay) {
    if (const char* inner = std::getenv("VELDAN_INNER_FOLDER")) {
        std::_Exit(opensAs(inner, inner) ? 0 : 10);
    }
    test::TempDir dir;
    test::makeFolders(dir / "pass/inner");
    ASSERT_EQ(::chmod(dir.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod((dir / "pass").c_str(), 0711), 0);
    char self[PATH_MAX] = {};
    ASSERT_GT(::readlink("/proc/self/exe", self, sizeof self - 1), 0);
    test::ProcessOptions options;
    options.environment["VELDAN_INNER_FOLDER"] = dir / "pass/inner";
    const auto result = test::runProcess(
        test::asNobody(
            {self, "--gtest_filter=DirectoryWithoutLinksTest.NeedsOnlySearchPermissionOnTheWay"}),
        options);
    EXPECT_EQ(result.exitCode, 0) << result.out << result.err;
}

}  // namespace
}  // namespace veldan::platform
