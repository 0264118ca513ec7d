#pragma once
// Runs a real child process for a test and collects what it printed.

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace veldan::test {

struct ProcessResult {
    int exitCode = -1;  // -1 when killed by a signal
    int signal = 0;     // the signal that ended it, if any
    std::string out;
    std::string err;
};

struct ProcessOptions {
    std::map<std::string, std::string> environment;  // added to (or replacing) the inherited one
    std::optional<std::string> input;                // written to standard input, then closed
    std::string workingFolder;
    double timeoutSeconds = 60;
};

ProcessResult runProcess(const std::vector<std::string>& argv, const ProcessOptions& options = {});

// Runs the command with a pseudo-terminal as its standard input, output and error (so it
// behaves as it does for a person), collecting everything it printed in `out`. When
// `interruptOn` is not empty, SIGINT goes to the command as soon as that text appears.
ProcessResult runInTerminal(const std::vector<std::string>& argv, const ProcessOptions& options,
                            const std::string& interruptOn = {});

// The path of the built `veldan` command.
std::string veldanBinary();

// The same command line run as user "nobody" (setpriv), for permission tests: tests run
// as root, and root reads everything regardless of modes. An absolute program path is
// replaced by a copy that "nobody" can execute. Pass absolute paths as arguments.
std::vector<std::string> asNobody(std::vector<std::string> argv);

}  // namespace veldan::test
