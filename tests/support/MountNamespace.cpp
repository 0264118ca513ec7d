#include "tests/support/MountNamespace.hpp"

#include <sys/mount.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tests/support/Process.hpp"

namespace veldan::test {

namespace {

constexpr const char* insideVariable = "VELDAN_TEST_IN_MOUNT_NAMESPACE";

}  // namespace

bool insideMountNamespace() {
    return std::getenv(insideVariable) != nullptr;
}

void runInMountNamespace(const std::string& suite, int count) {
    if (runProcess({"unshare", "-m", "--propagation", "private", "true"}).exitCode != 0) {
        GTEST_SKIP() << "mount namespaces are not available here";
    }
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    ProcessOptions options;
    options.environment[insideVariable] = "1";
    const auto run =
        runProcess({"unshare", "-m", "--propagation", "private", self,
                    "--gtest_also_run_disabled_tests", "--gtest_filter=" + suite + ".DISABLED_*"},
                   options);
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("[  PASSED  ] " + std::to_string(count) + " test"), std::string::npos)
        << run.out;
}

Mount::Mount(const char* tmpfsOptions) : target_(folder_.path()) {
    if (::mount("tmpfs", target_.c_str(), "tmpfs", 0, tmpfsOptions) != 0) {
        throw std::runtime_error("mount tmpfs failed");
    }
}

Mount::Mount(const std::string& source, const std::string& target) : target_(target) {
    if (::mount(source.c_str(), target_.c_str(), nullptr, MS_BIND, nullptr) != 0) {
        throw std::runtime_error("bind mount of " + source + " failed");
    }
}

Mount::~Mount() {
    ::umount2(target_.c_str(), MNT_DETACH);
}

void Mount::makeReadOnly() const {
    if (::mount(nullptr, target_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
        throw std::runtime_error("remount read-only failed");
    }
}

}  // namespace veldan::test
