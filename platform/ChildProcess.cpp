#include "platform/ChildProcess.hpp"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "platform/UniqueFd.hpp"

extern char** environ;

namespace veldan::platform {

namespace {

using Clock = std::chrono::steady_clock;

enum class Wait { ended, deadline, stop };

// How long one wait lasts before the stop request is polled again.
constexpr std::chrono::milliseconds stopPollInterval{50};
// Without pidfd (kernels before 5.3) the child is polled with waitpid this often.
constexpr std::chrono::milliseconds reapPollInterval{10};
// How long the child is waited for after SIGKILL.
constexpr std::chrono::milliseconds killWait{5'000};

struct SpawnSetup {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
    SpawnSetup() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
};

bool reaped(pid_t pid, int& status) {
    for (;;) {
        const pid_t got = ::waitpid(pid, &status, WNOHANG);
        if (got == pid) return true;
        if (got < 0 && errno == EINTR) continue;
        return false;
    }
}

Wait waitUntil(pid_t pid, int pidfd, Clock::time_point until,
               const std::function<bool()>& stopRequested, int& status) {
    for (;;) {
        if (reaped(pid, status)) return Wait::ended;
        if (stopRequested && stopRequested()) return Wait::stop;
        const auto now = Clock::now();
        if (now >= until) return Wait::deadline;
        auto slice = std::chrono::duration_cast<std::chrono::milliseconds>(until - now) +
                     std::chrono::milliseconds(1);
        if (stopRequested) slice = std::min(slice, stopPollInterval);
        if (pidfd >= 0) {
            pollfd readable{pidfd, POLLIN, 0};
            ::poll(&readable, 1, static_cast<int>(slice.count()));
        } else {
            std::this_thread::sleep_for(std::min(slice, reapPollInterval));
        }
    }
}

ChildProcessResult resultOf(int status) {
    ChildProcessResult result;
    if (WIFEXITED(status)) {
        result.ending = ChildProcessResult::Ending::exited;
        result.exitStatus = WEXITSTATUS(status);
    } else {
        result.ending = ChildProcessResult::Ending::signalled;
        result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }
    return result;
}

}  // namespace

ChildProcessResult ChildProcess::run(const ChildProcessRequest& request) {
    SpawnSetup setup;
    posix_spawn_file_actions_addopen(&setup.actions, 0, "/dev/null", O_RDONLY, 0);
    if (request.outputFd >= 0) {
        posix_spawn_file_actions_adddup2(&setup.actions, request.outputFd, 1);
        posix_spawn_file_actions_adddup2(&setup.actions, request.outputFd, 2);
    } else {
        posix_spawn_file_actions_addopen(&setup.actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&setup.actions, 1, 2);
    }
    // Its own process group, so a time-out reaches the tool's helpers too; default
    // signal handling and an empty mask, whatever this process set up for itself.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setflags(
        &setup.attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&setup.attributes, 0);
    posix_spawnattr_setsigmask(&setup.attributes, &none);
    posix_spawnattr_setsigdefault(&setup.attributes, &all);

    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(request.executable.c_str()));
    for (const auto& argument : request.arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (const auto& entry : request.environment)
        envp.push_back(const_cast<char*>(entry.c_str()));
    envp.push_back(nullptr);

    pid_t pid = 0;
    const int spawnError = ::posix_spawn(&pid, request.executable.c_str(), &setup.actions,
                                         &setup.attributes, argv.data(), envp.data());
    if (spawnError != 0) {
        ChildProcessResult result;
        result.startError = spawnError;
        return result;
    }

    UniqueFd pidfd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    int status = 0;
    const Wait first = waitUntil(pid, pidfd.get(), Clock::now() + request.timeLimit,
                                 request.stopRequested, status);
    if (first == Wait::ended) return resultOf(status);

    // The group reaches the tool's helpers, the pid a tool that moved itself to another
    // group. Until it is reaped the pid is still this child's, never a stranger's.
    auto signalChild = [pid](int number) {
        ::kill(-pid, number);
        ::kill(pid, number);
    };
    signalChild(SIGTERM);
    const auto graceEnd = Clock::now() + request.grace;
    if (waitUntil(pid, pidfd.get(), graceEnd, {}, status) == Wait::ended) {
        // Helpers that ignore the request may outlive their leader; the group keeps its
        // number while any of them lives, so it still names only them.
        while (::kill(-pid, 0) == 0 && Clock::now() < graceEnd)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ::kill(-pid, SIGKILL);
    } else {
        signalChild(SIGKILL);
        // SIGKILL ends the child, but one stuck in the kernel (on a hung network file
        // system, say) goes only when that call returns. The caller is not held past the
        // bound for it; such a child then stays unreaped until Veldan exits.
        waitUntil(pid, pidfd.get(), Clock::now() + killWait, {}, status);
    }
    ChildProcessResult result;
    result.ending = first == Wait::stop ? ChildProcessResult::Ending::stopped
                                        : ChildProcessResult::Ending::timedOut;
    return result;
}

std::vector<std::string> ChildProcess::environmentWithPath(const std::string& path) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        if (!text.starts_with("PATH=")) environment.emplace_back(text);
    }
    environment.push_back("PATH=" + path);
    return environment;
}

}  // namespace veldan::platform
