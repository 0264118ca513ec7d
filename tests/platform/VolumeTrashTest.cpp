// Items on another file system than the home Trash go to that volume's own Trash. The
// volumes are tmpfs mounts made inside a private mount namespace: the outer test runs
// this binary again under `unshare -m`, where the DISABLED_ cases mount and check.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/Trash.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

constexpr const char* insideVariable = "VELDAN_TEST_IN_MOUNT_NAMESPACE";

bool insideNamespace() {
    return std::getenv(insideVariable) != nullptr;
}

// A fresh tmpfs for one test; only ever mounted inside the private namespace.
class Volume {
public:
    explicit Volume(const char* options = "size=16m,mode=755") {
        if (::mount("tmpfs", dir_.path().c_str(), "tmpfs", 0, options) != 0) {
            throw std::runtime_error("mount tmpfs failed");
        }
    }
    ~Volume() { ::umount2(dir_.path().c_str(), MNT_DETACH); }
    const std::string& top() const { return dir_.path(); }
    std::string operator/(const std::string& relative) const { return dir_ / relative; }
    void makeReadOnly() const {
        if (::mount(nullptr, top().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
            throw std::runtime_error("remount read-only failed");
        }
    }

private:
    test::TempDir dir_;
};

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

// The cases mount, so they only run inside the namespace the outer test made.
class VolumeTrashInside : public ::testing::Test {
protected:
    void SetUp() override {
        if (!insideNamespace()) GTEST_SKIP();
    }
};

}  // namespace

TEST(VolumeTrash, AllCasesPassInAPrivateMountNamespace) {
    if (test::runProcess({"unshare", "-m", "--propagation", "private", "true"}).exitCode != 0) {
        GTEST_SKIP() << "mount namespaces are not available here";
    }
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    test::ProcessOptions options;
    options.environment[insideVariable] = "1";
    const auto run = test::runProcess(
        {"unshare", "-m", "--propagation", "private", self, "--gtest_also_run_disabled_tests",
         "--gtest_filter=VolumeTrashInside.DISABLED_*"},
        options);
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("[  PASSED  ] 5 tests"), std::string::npos) << run.out;
}

TEST_F(VolumeTrashInside, DISABLED_UsesTrashDashUidCreatedPrivateWithARelativePath) {
    Volume volume;
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
    Volume volume;
    test::makeFolders(volume / ".Trash");
    ::chmod((volume / ".Trash").c_str(), 01777);
    const auto outcome = platform::Trash::moveItem(makeItem(volume / "item", "shared"));
    ASSERT_TRUE(outcome.moved) << outcome.reason;
    EXPECT_EQ(outcome.trashedPath, volume / (".Trash/" + uid() + "/files/item"));
    EXPECT_FALSE(test::exists(volume / (".Trash-" + uid())));
    expectListedAndRestored(volume / "item", "shared");
}

TEST_F(VolumeTrashInside, DISABLED_IgnoresASharedTrashThatIsNotStickyOrIsALink) {
    Volume volume;
    test::makeFolders(volume / ".Trash");
    ::chmod((volume / ".Trash").c_str(), 0777);
    ASSERT_TRUE(platform::Trash::moveItem(makeItem(volume / "first", "1")).moved);
    EXPECT_TRUE(test::exists(volume / (".Trash-" + uid() + "/files/first")));

    Volume linked;
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
    Volume volume;
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
    Volume volume;
    makeItem(volume / "busy", "mounted");
    // A mount point cannot be renamed: the rename fails after the info file was written.
    ASSERT_EQ(
        ::mount((volume / "busy").c_str(), (volume / "busy").c_str(), nullptr, MS_BIND, nullptr),
        0);
    const auto outcome = platform::Trash::moveItem(volume / "busy");
    ::umount2((volume / "busy").c_str(), MNT_DETACH);
    EXPECT_FALSE(outcome.moved);
    EXPECT_EQ(outcome.reason, "Could not move the item to Trash (Device or resource busy).");
    EXPECT_TRUE(test::exists(volume / (".Trash-" + uid() + "/info")));
    EXPECT_FALSE(test::exists(volume / (".Trash-" + uid() + "/info/busy.trashinfo")));
    EXPECT_EQ(test::readFile(volume / "busy/file"), "mounted");
}

}  // namespace veldan
