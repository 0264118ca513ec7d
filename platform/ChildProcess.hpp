#pragma once
// Runs one external program with an explicit executable, arguments and environment,
// its standard output and error going to a descriptor the caller owns, under a time
// limit. The child leads its own process group so that ending it on time-out also ends
// whatever it started; the signals go to the child itself too, so one that left its
// group is ended all the same (its helpers in that other group may keep running).
//
// Contract: blocks the calling thread for at most the time limit plus the grace period
// plus five seconds after SIGKILL; the child has then been reaped, unless it was stuck in
// the kernel that long after SIGKILL. Thread-safe: each call spawns and waits for
// its own child. Failures are values, never exceptions.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace veldan::platform {

struct ChildProcessRequest {
    std::string executable;                // absolute path; not searched for
    std::vector<std::string> arguments;    // without the program name
    std::vector<std::string> environment;  // "NAME=value" entries, the child's whole environment
    int outputFd = -1;                     // standard output and error; -1 for /dev/null
    std::chrono::milliseconds timeLimit{180'000};
    // After the time limit the child and its group get SIGTERM, then this long before
    // SIGKILL.
    std::chrono::milliseconds grace{3'000};
    // Polled while waiting; true ends the child the same way as a time-out.
    std::function<bool()> stopRequested;
};

struct ChildProcessResult {
    enum class Ending { exited, signalled, timedOut, stopped, notStarted };
    Ending ending = Ending::notStarted;
    int exitStatus = 0;  // for `exited`
    int signal = 0;      // for `signalled`
    int startError = 0;  // errno value for `notStarted`
};

class ChildProcess {
public:
    static ChildProcessResult run(const ChildProcessRequest& request);

    // The current process's environment with PATH set to `path` (added when absent).
    static std::vector<std::string> environmentWithPath(const std::string& path);
};

}  // namespace veldan::platform
