// Running external programs with a time limit, with real child processes.

#include "platform/ChildProcess.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/UniqueFd.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

namespace {

using platform::ChildProcess;
using platform::ChildProcessRequest;
using platform::ChildProcessResult;
using namespace std::chrono_literals;

struct Output {
    test::TempDir dir;
    platform::UniqueFd fd{::open((dir / "out").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    std::string text() const { return test::readFile(dir / "out"); }
};

std::string script(const test::TempDir& dir, const std::string& name, const std::string& body) {
    const std::string path = dir / name;
    test::writeFile(path, "#!/bin/sh\n" + body);
    ::chmod(path.c_str(), 0755);
    return path;
}

bool processGone(pid_t pid) {
    // A killed process may linger as a zombie until its parent (or init) reaps it.
    if (::kill(pid, 0) != 0) return true;
    try {
        const std::string stat = test::readFile("/proc/" + std::to_string(pid) + "/stat");
        return stat.find(") Z") != std::string::npos;
    } catch (const std::exception&) {
        return true;
    }
}

// Waits a moment for a killed process to go, as its reaping may lag behind.
bool goneSoon(pid_t pid) {
    for (int i = 0; i < 100 && !processGone(pid); ++i)
        std::this_thread::sleep_for(10ms);
    return processGone(pid);
}

// Runs a tool expected to overrun `limit`; answers how long the run took.
std::chrono::steady_clock::duration runPastLimit(ChildProcessRequest request,
                                                 std::chrono::milliseconds grace = 300ms,
                                                 std::chrono::milliseconds limit = 300ms) {
    request.timeLimit = limit;
    request.grace = grace;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ChildProcess::run(request).ending, ChildProcessResult::Ending::timedOut);
    return std::chrono::steady_clock::now() - start;
}

}  // namespace

TEST(ChildProcess, PassesArgumentsVerbatimAndGivesExactlyTheEnvironment) {
    Output output;
    ChildProcessRequest request;
    request.executable = script(output.dir, "tool",
                                "printf '[%s]' \"$@\"; printf ' PATH=%s HOME=%s\\n' \"$PATH\" "
                                "\"${HOME-unset}\"; echo err >&2; exit 3\n");
    request.arguments = {"two words", "'quoted'", "$(not run)", ""};
    request.environment = {"PATH=/first:/second"};
    request.outputFd = output.fd.get();
    const auto result = ChildProcess::run(request);
    EXPECT_EQ(result.ending, ChildProcessResult::Ending::exited);
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_EQ(output.text(),
              "[two words]['quoted'][$(not run)][] PATH=/first:/second HOME=unset\nerr\n");
}

TEST(ChildProcess, EnvironmentWithPathReplacesOnlyPath) {
    ::setenv("VELDAN_CHILD_TEST", "kept", 1);
    const auto environment = ChildProcess::environmentWithPath("/only/here");
    EXPECT_EQ(std::count(environment.begin(), environment.end(), "PATH=/only/here"), 1);
    EXPECT_EQ(std::count_if(environment.begin(), environment.end(),
                            [](const std::string& e) { return e.starts_with("PATH="); }),
              1);
    EXPECT_EQ(std::count(environment.begin(), environment.end(), "VELDAN_CHILD_TEST=kept"), 1);
}

TEST(ChildProcess, ReportsAProgramThatCannotStartAndOneEndedBySignal) {
    test::TempDir dir;
    ChildProcessRequest missing;
    missing.executable = dir / "absent";
    const auto notStarted = ChildProcess::run(missing);
    EXPECT_EQ(notStarted.ending, ChildProcessResult::Ending::notStarted);
    EXPECT_EQ(notStarted.startError, ENOENT);

    ChildProcessRequest crashing;
    crashing.executable = script(dir, "crash", "kill -SEGV $$\n");
    const auto signalled = ChildProcess::run(crashing);
    EXPECT_EQ(signalled.ending, ChildProcessResult::Ending::signalled);
    EXPECT_EQ(signalled.signal, SIGSEGV);
}

TEST(ChildProcess, EndsAToolThatIgnoresTerminateWithSigkillOfItsWholeGroup) {
    Output output;
    const std::string pids = output.dir / "pids";
    ChildProcessRequest request;
    request.executable =
        script(output.dir, "stubborn",
               "trap '' TERM\nsleep 30 &\necho $$ $! > '" + pids + "'\nwait\nwait\n");
    request.outputFd = output.fd.get();
    const auto took = runPastLimit(request);
    EXPECT_GE(took, 600ms);
    EXPECT_LT(took, 5s);
    std::istringstream ids(test::readFile(pids));
    pid_t shell = 0, sleeper = 0;
    ids >> shell >> sleeper;
    ASSERT_GT(sleeper, 0);
    EXPECT_TRUE(processGone(shell));
    EXPECT_TRUE(goneSoon(sleeper)) << "the tool's own child was killed with it";
}

TEST(ChildProcess, EndsAToolThatLeftItsProcessGroup) {
    Output output;
    const std::string ids = output.dir / "ids";
    // It joins this test's own group, ignores SIGTERM (kept across exec) and sleeps, so
    // only signals sent to its pid itself can end it.
    ChildProcessRequest request;
    request.executable = output.dir / "escaper";
    test::writeFile(request.executable,
                    "#!/usr/bin/perl\n"
                    "setpgrp(0, getpgrp(getppid())) or die \"setpgrp: $!\";\n"
                    "$SIG{TERM} = 'IGNORE';\n"
                    "open(my $ids, '>', $ARGV[0]) or die \"$ARGV[0]: $!\";\n"
                    "print $ids \"$$ \", getpgrp(0);\n"
                    "close $ids;\n"
                    "exec 'sleep', '8';\n");
    ::chmod(request.executable.c_str(), 0755);
    request.arguments = {ids};
    request.outputFd = output.fd.get();
    EXPECT_LT(runPastLimit(request), 5s) << output.text();
    std::istringstream written(test::readFile(ids));
    pid_t child = 0, group = 0;
    written >> child >> group;
    ASSERT_GT(child, 0) << output.text();
    EXPECT_EQ(group, ::getpgrp()) << "it left the group it was started in";
    EXPECT_TRUE(processGone(child));
}

TEST(ChildProcess, AToolThatHonoursTerminateEndsWithoutWaitingForTheGrace) {
    test::TempDir dir;
    ChildProcessRequest request;
    request.executable = script(dir, "slow", "exec sleep 30\n");
    EXPECT_LT(runPastLimit(request, 10s, 200ms), 3s);
}

TEST(ChildProcess, HelpersThatOutliveTheirLeaderEndAfterTheGrace) {
    Output output;
    const std::string pids = output.dir / "pids";
    ChildProcessRequest request;
    request.executable = script(
        output.dir, "leader",
        "sh -c \"trap '' TERM; exec sleep 30\" &\necho $! > '" + pids + "'\nexec sleep 30\n");
    request.outputFd = output.fd.get();
    runPastLimit(request);
    pid_t helper = 0;
    std::istringstream(test::readFile(pids)) >> helper;
    ASSERT_GT(helper, 0);
    EXPECT_TRUE(goneSoon(helper)) << "a helper ignoring SIGTERM outlived the time limit";
}

TEST(ChildProcess, AStopRequestEndsTheChildEarly) {
    test::TempDir dir;
    ChildProcessRequest request;
    request.executable = script(dir, "slow", "exec sleep 30\n");
    const auto start = std::chrono::steady_clock::now();
    request.stopRequested = [&] { return std::chrono::steady_clock::now() - start > 200ms; };
    EXPECT_EQ(ChildProcess::run(request).ending, ChildProcessResult::Ending::stopped);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
}

}  // namespace veldan
