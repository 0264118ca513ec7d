#include "tests/support/Process.hpp"

#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>

extern char** environ;

namespace veldan::test {

namespace {

// The argument and environment arrays of a child: the inherited environment with the
// options' variables added or replaced.
class ChildArguments {
public:
    ChildArguments(const std::vector<std::string>& argv, const ProcessOptions& options) {
        for (char** entry = environ; *entry; ++entry) {
            const std::string text = *entry;
            if (!options.environment.count(text.substr(0, text.find('=')))) texts_.push_back(text);
        }
        for (const auto& [name, value] : options.environment)
            texts_.push_back(name + "=" + value);
        for (auto& text : texts_)
            environment_.push_back(text.data());
        environment_.push_back(nullptr);
        for (const auto& arg : argv)
            arguments_.push_back(const_cast<char*>(arg.c_str()));
        arguments_.push_back(nullptr);
    }
    const char* program() const { return arguments_[0]; }
    char* const* arguments() { return arguments_.data(); }
    char* const* environment() { return environment_.data(); }

private:
    std::vector<std::string> texts_;
    std::vector<char*> environment_;
    std::vector<char*> arguments_;
};

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& argv, const ProcessOptions& options) {
    int outPipe[2], errPipe[2], inPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0 ||
        ::pipe2(inPipe, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    ChildArguments child(argv, options);

    const pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        ::dup2(inPipe[0], 0);
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        ::setpgid(0, 0);
        if (!options.workingFolder.empty() && ::chdir(options.workingFolder.c_str()) != 0)
            _exit(127);
        ::execvpe(child.program(), child.arguments(), child.environment());
        _exit(127);
    }
    ::close(inPipe[0]);
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (options.input) {
        const std::string& input = *options.input;
        size_t written = 0;
        while (written < input.size()) {
            const ssize_t n = ::write(inPipe[1], input.data() + written, input.size() - written);
            if (n <= 0) break;
            written += static_cast<size_t>(n);
        }
    }
    ::close(inPipe[1]);

    ProcessResult result;
    const auto deadline =
        std::chrono::steady_clock::now() +
        std::chrono::milliseconds(static_cast<long>(options.timeoutSeconds * 1000));
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    bool killed = false;
    while (open > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 && !killed) {
            ::kill(-pid, SIGKILL);
            killed = true;
        }
        if (::poll(fds, 2, killed ? 1000 : static_cast<int>(std::max<long>(left.count(), 1))) < 0)
            break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            char buffer[65536];
            const ssize_t got = ::read(fds[i].fd, buffer, sizeof buffer);
            if (got <= 0) {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            } else {
                (i == 0 ? result.out : result.err).append(buffer, static_cast<size_t>(got));
            }
        }
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
}

ProcessResult runInTerminal(const std::vector<std::string>& argv, const ProcessOptions& options,
                            const std::string& interruptOn) {
    ChildArguments child(argv, options);

    int master = -1;
    struct winsize size {};
    size.ws_col = 120;
    size.ws_row = 40;
    const pid_t pid = ::forkpty(&master, nullptr, nullptr, &size);
    if (pid < 0) throw std::runtime_error("forkpty failed");
    if (pid == 0) {
        if (!options.workingFolder.empty() && ::chdir(options.workingFolder.c_str()) != 0)
            _exit(127);
        ::execvpe(child.program(), child.arguments(), child.environment());
        _exit(127);
    }
    ProcessResult result;
    bool interrupted = false;
    const auto deadline =
        std::chrono::steady_clock::now() +
        std::chrono::milliseconds(static_cast<long>(options.timeoutSeconds * 1000));
    for (;;) {
        pollfd fd{master, POLLIN, 0};
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(pid, SIGKILL);
            break;
        }
        if (::poll(&fd, 1, 100) < 0) break;
        if (!(fd.revents & (POLLIN | POLLHUP | POLLERR))) continue;
        char buffer[4096];
        const ssize_t got = ::read(master, buffer, sizeof buffer);
        if (got <= 0) break;  // EIO once the child closed the terminal
        result.out.append(buffer, static_cast<size_t>(got));
        if (!interrupted && !interruptOn.empty() &&
            result.out.find(interruptOn) != std::string::npos) {
            ::kill(pid, SIGINT);
            interrupted = true;
        }
    }
    ::close(master);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
}

std::string veldanBinary() {
    return VELDAN_BINARY;
}

namespace {

// The build folder may sit under a home that "nobody" cannot enter (/root), so the
// program runs from a copy in a world-readable temporary folder, made once per process.
std::string reachableCopy(const std::string& program) {
    static std::map<std::string, std::string> copies;
    static TempDir folder;
    auto found = copies.find(program);
    if (found != copies.end()) return found->second;
    const std::string copy = folder.path() + "/" + std::to_string(copies.size()) + "-" +
                             program.substr(program.rfind('/') + 1);
    writeFile(copy, readFile(program));
    ::chmod(copy.c_str(), 0755);
    copies[program] = copy;
    return copy;
}

}  // namespace

std::vector<std::string> asNobody(std::vector<std::string> argv) {
    if (!argv.empty() && !argv[0].empty() && argv[0][0] == '/') argv[0] = reachableCopy(argv[0]);
    std::vector<std::string> full = {"setpriv", "--reuid=nobody", "--regid=nogroup",
                                     "--clear-groups", "--"};
    full.insert(full.end(), argv.begin(), argv.end());
    return full;
}

}  // namespace veldan::test
