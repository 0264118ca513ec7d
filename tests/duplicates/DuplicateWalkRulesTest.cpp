// Where a duplicate search may go, asked of its rules directly: a test cannot search "/"
// or mount a volume, but the rules for both can be checked.

#include "duplicates/DuplicateWalkRules.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/FileStatus.hpp"
#include "platform/UniqueFd.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

// Folders whose names are not trash names never need their parent: -1 says so.
constexpr int parentNotAsked = -1;

platform::UniqueFd openFolder(const std::string& path) {
    int error = 0;
    auto fd = platform::openDirectory(path, error);
    if (!fd) throw std::runtime_error("open " + path);
    return fd;
}

uint64_t deviceOf(const std::string& path) {
    const auto status = platform::statPath(path, false);
    if (!status) throw std::runtime_error("lstat " + path);
    return status->device;
}

class DuplicateWalkRulesTest : public ::testing::Test {
protected:
    test::IsolatedHome home_;
    uint64_t homeDevice_ = deviceOf(home_.home());
    // Stands for a startup disk other than the one holding the home folder.
    uint64_t otherDevice_ = homeDevice_ + 1;
};

TEST_F(DuplicateWalkRulesTest, WholeDiskSearchAlsoEntersTheHomeFoldersDevice) {
    const DuplicateWalkRules whole("/", otherDevice_);
    EXPECT_TRUE(whole.rootScan());
    EXPECT_TRUE(whole.allowsDevice(otherDevice_));
    EXPECT_TRUE(whole.allowsDevice(homeDevice_));
    EXPECT_FALSE(whole.allowsDevice(otherDevice_ + 1));

    const DuplicateWalkRules folder("/srv", otherDevice_);
    EXPECT_FALSE(folder.rootScan());
    EXPECT_TRUE(folder.allowsDevice(otherDevice_));
    EXPECT_FALSE(folder.allowsDevice(homeDevice_));
}

TEST_F(DuplicateWalkRulesTest, VolumeTrashIsSkippedOnlyAtTheTopOfAMount) {
    test::TempDir dir;
    const DuplicateWalkRules rules(dir.path(), homeDevice_);
    const auto folder = openFolder(dir.path());
    EXPECT_FALSE(rules.skipsDirectory(dir / ".Trash-1000", ".Trash-1000", folder.get()));
    EXPECT_TRUE(rules.skipsDirectory(dir / ".Trash", ".Trash", folder.get()));

    const auto root = openFolder("/");
    EXPECT_TRUE(rules.skipsDirectory("/.Trash-1000", ".Trash-1000", root.get()));
    EXPECT_FALSE(rules.skipsDirectory("/.Trash-1000x", ".Trash-1000x", root.get()));
    EXPECT_FALSE(rules.skipsDirectory("/.Trash-", ".Trash-", root.get()));

    // Every Linux system mounts /proc on a device of its own.
    ASSERT_NE(deviceOf("/proc"), deviceOf("/"));
    const auto proc = openFolder("/proc");
    EXPECT_TRUE(rules.skipsDirectory("/proc/.Trash-0", ".Trash-0", proc.get()));
}

}  // namespace
}  // namespace veldan
