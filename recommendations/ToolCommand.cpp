#include "recommendations/ToolCommand.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/ChildProcess.hpp"
#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/UserFolders.hpp"
#include "platform/Uuid.hpp"
#include "recommendations/ToolSearchPath.hpp"

namespace veldan {

namespace {

using platform::ChildProcessResult;

ToolCommandOutcome failed(std::string message) {
    return {{}, CleanupError{std::move(message)}};
}

std::string readRange(int fd, off_t from, size_t length) {
    std::string text(length, '\0');
    size_t got = 0;
    while (got < length) {
        const ssize_t n =
            ::pread(fd, text.data() + got, length - got, from + static_cast<off_t>(got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += static_cast<size_t>(n);
    }
    text.resize(got);
    return text;
}

bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// The end of the output on one line: runs of white space (line breaks included) become
// one space, and a character cut in half at the start is dropped.
std::string tidyTail(std::string tail) {
    size_t start = 0;
    while (start < tail.size() && (static_cast<unsigned char>(tail[start]) & 0xC0) == 0x80)
        ++start;
    std::string out;
    for (size_t i = start; i < tail.size(); ++i) {
        if (isSpace(tail[i])) {
            if (!out.empty() && out.back() != ' ') out += ' ';
        } else {
            out += tail[i];
        }
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

}  // namespace

ToolCommandOutcome ToolCommand::run(const std::string& tool, const std::string& executable,
                                    const std::vector<std::string>& arguments, bool capturingOutput,
                                    bool isCleanup, const ToolCommandSettings& settings) {
    const std::string outputPath =
        platform::joinPath(platform::temporaryFolder(), "veldan-tool-" + platform::randomUuid());
    platform::UniqueFd output(
        ::open(outputPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!output) return failed("Could not prepare output for " + tool + ".");
    // The descriptor is all the child and the reading need, so the name goes at once: a
    // crash cannot leave the file behind.
    ::unlink(outputPath.c_str());

    platform::ChildProcessRequest request;
    request.executable = executable;
    request.arguments = arguments;
    request.environment =
        platform::ChildProcess::environmentWithPath(ToolSearchPath::joined(settings.searchPath));
    request.outputFd = output.get();
    request.timeLimit = settings.timeLimit;
    request.grace = settings.grace;
    request.stopRequested = settings.stopRequested;
    const auto result = platform::ChildProcess::run(request);

    switch (result.ending) {
        case ChildProcessResult::Ending::notStarted:
            return failed(tool + " is unavailable. The other selected items can still be cleaned.");
        case ChildProcessResult::Ending::timedOut:
            return failed(tool +
                          " exceeded three minutes, so Veldan ended its command. Any subprocesses "
                          "may still be finishing; scan again before attempting another cleanup.");
        case ChildProcessResult::Ending::stopped:
            return failed(tool +
                          " was stopped before it finished. Any subprocesses may still be "
                          "finishing; scan again before attempting another cleanup.");
        case ChildProcessResult::Ending::exited:
        case ChildProcessResult::Ending::signalled:
            break;
    }

    struct stat status {};
    const size_t size =
        ::fstat(output.get(), &status) == 0 ? static_cast<size_t>(status.st_size) : 0;
    // A folder path fits in the limit whatever the exit status; past it the answer is
    // not one, and the limit also bounds what is read into memory below.
    if (capturingOutput && size > captureLimit)
        return failed(tool + " returned an unexpected cache location.");
    const bool exitedCleanly =
        result.ending == ChildProcessResult::Ending::exited && result.exitStatus == 0;
    if (!exitedCleanly) {
        // A command ended by a signal reports the signal's number, its termination status.
        const int code =
            result.ending == ChildProcessResult::Ending::exited ? result.exitStatus : result.signal;
        const size_t length = capturingOutput ? size : std::min(size, tailBytes);
        const std::string tail =
            tidyTail(readRange(output.get(), static_cast<off_t>(size - length), length));
        std::string message = tool + " exited with status " + std::to_string(code) + ".";
        if (!tail.empty()) message += " " + tail;
        if (isCleanup)
            message += " It may have cleaned some entries; scan again to see what remains.";
        return failed(message);
    }
    if (!capturingOutput) return {};
    return {readRange(output.get(), 0, size), std::nullopt};
}

}  // namespace veldan
