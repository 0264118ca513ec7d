// The logind inhibitor, over a private D-Bus daemon on which a stand-in for logind
// (fake_login1) answers Inhibit; and without any system bus. libdbus reads the bus address
// once per process, so each case runs in a child of this binary with its own address.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "platform/BackgroundWorkActivity.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

constexpr const char* expectVariable = "VELDAN_TEST_EXPECT_INHIBITOR";

// A program that runs beside the test, its output going to a file.
class Background {
public:
    Background(const std::vector<std::string>& argv, const std::string& output,
               const std::map<std::string, std::string>& environment = {})
        : output_(output) {
        pid_ = ::fork();
        if (pid_ == 0) {
            for (const auto& [name, value] : environment)
                ::setenv(name.c_str(), value.c_str(), 1);
            if (!std::freopen(output.c_str(), "w", stdout)) _exit(126);
            std::vector<char*> args;
            for (const auto& arg : argv)
                args.push_back(const_cast<char*>(arg.c_str()));
            args.push_back(nullptr);
            ::execvp(args[0], args.data());
            _exit(127);
        }
    }
    ~Background() {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    // Waits (a generous bound, not a timing assumption) until the output holds `text`.
    bool waitFor(const std::string& text, int occurrences = 1) const {
        for (int i = 0; i < 2000; ++i) {
            if (count(text) >= occurrences) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    int count(const std::string& text) const {
        const std::string out = test::exists(output_) ? test::readFile(output_) : "";
        int found = 0;
        for (auto at = out.find(text); at != std::string::npos; at = out.find(text, at + 1))
            ++found;
        return found;
    }
    std::string output() const { return test::readFile(output_); }

private:
    pid_t pid_ = -1;
    std::string output_;
};

// Runs the inside case in a child with `busAddress` as its system bus.
test::ProcessResult runInside(const std::string& busAddress, bool expectHeld) {
    test::ProcessOptions options;
    options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = busAddress;
    options.environment[expectVariable] = expectHeld ? "1" : "0";
    return test::runProcess(
        {std::filesystem::read_symlink("/proc/self/exe"), "--gtest_also_run_disabled_tests",
         "--gtest_filter=BackgroundWorkActivityInside.DISABLED_*"},
        options);
}

constexpr const char* inhibitLine =
    "inhibit idle:sleep|Veldan|Veldan is scanning or cleaning your disk|block";

}  // namespace

TEST(BackgroundWorkActivity, WithoutASystemBusNothingIsHeldAndNothingFails) {
    test::TempDir dir;
    const auto run = runInside("unix:path=" + dir / "no-bus", false);
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
}

TEST(BackgroundWorkActivity, HoldsOneLogindInhibitorWhileBusyAndReleasesItAfter) {
    test::TempDir dir;
    if (::access("/usr/bin/dbus-daemon", X_OK) != 0) GTEST_SKIP() << "no dbus-daemon";
    const std::string address = "unix:path=" + dir / "bus";
    Background bus(
        {"dbus-daemon", "--session", "--nofork", "--address=" + address, "--print-address=1"},
        dir / "bus.out");
    ASSERT_TRUE(bus.waitFor("unix:path=")) << "the private bus did not start";

    for (bool denySleep : {false, true}) {
        std::map<std::string, std::string> environment{{"DBUS_SYSTEM_BUS_ADDRESS", address}};
        if (denySleep) environment["FAKE_LOGIN1_DENY_SLEEP"] = "1";
        const std::string log = dir / (denySleep ? "deny.out" : "login1.out");
        Background login1({VELDAN_FAKE_LOGIN1}, log, environment);
        ASSERT_TRUE(login1.waitFor("ready")) << login1.output();

        const auto run = runInside(address, true);
        EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
        EXPECT_TRUE(login1.waitFor("released")) << login1.output();
        EXPECT_EQ(login1.count(inhibitLine), 1) << "repeated updates take one inhibitor\n"
                                                << login1.output();
        EXPECT_EQ(login1.count("inhibit idle|Veldan|"), denySleep ? 1 : 0)
            << "idle alone where sleep is refused\n"
            << login1.output();
        EXPECT_EQ(login1.count("released"), 1) << login1.output();
    }
}

TEST(BackgroundWorkActivityInside, DISABLED_UpdatesFollowTheWork) {
    const char* expect = std::getenv(expectVariable);
    if (!expect) GTEST_SKIP();
    platform::BackgroundWorkActivity activity;
    activity.update(true);
    activity.update(true);
    activity.drain();
    EXPECT_EQ(activity.isHeld(), std::string(expect) == "1");
    activity.update(false);
    activity.drain();
    EXPECT_FALSE(activity.isHeld());
}

}  // namespace veldan
