#include "cli/DailyTimer.hpp"

#include <unistd.h>

#include <vector>

#include "cli/DailyTimerUnits.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/ChildProcess.hpp"
#include "platform/FileContents.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan::cli {

namespace {

using platform::ChildProcess;
using platform::ChildProcessRequest;
using platform::ChildProcessResult;

std::optional<std::string> systemctl() {
    for (const char* path : {"/usr/bin/systemctl", "/bin/systemctl"}) {
        if (::access(path, X_OK) == 0) return std::string(path);
    }
    return std::nullopt;
}

// systemctl --user with `arguments`; true when it exited with status 0.
bool run(const std::vector<std::string>& arguments) {
    auto executable = systemctl();
    if (!executable) return false;
    ChildProcessRequest request;
    request.executable = *executable;
    request.arguments = {"--user"};
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    request.environment = ChildProcess::environmentWithPath("/usr/bin:/bin");
    request.timeLimit = std::chrono::seconds(20);
    const ChildProcessResult result = ChildProcess::run(request);
    return result.ending == ChildProcessResult::Ending::exited && result.exitStatus == 0;
}

// A path as one word of ExecStart=: in double quotes, with what systemd would otherwise
// expand ("%" specifiers, "$" variables) or unquote doubled or escaped.
std::string systemdQuoted(const std::string& path) {
    std::string quoted = "\"";
    for (char c : path) {
        if (c == '\\' || c == '"') quoted += '\\';
        if (c == '%' || c == '$') quoted += c;
        quoted += c;
    }
    return quoted + "\"";
}

std::string thisBinary() {
    return platform::resolveSymlinks("/proc/self/exe");
}

}  // namespace

bool DailyTimer::available() {
    return run({"show-environment"});
}

bool DailyTimer::isEnabled() {
    return run({"is-enabled", "--quiet", timerName});
}

std::string DailyTimer::serviceUnitFor(const std::string& binary) {
    std::string unit = dailyServiceUnit;
    const std::string plain = "ExecStart=veldan ";
    const auto at = unit.find(plain);
    if (at != std::string::npos) {
        unit.replace(at, plain.size(), "ExecStart=" + systemdQuoted(binary) + " ");
    }
    return unit;
}

std::optional<std::string> DailyTimer::enable() {
    if (!run({"cat", timerName})) {
        const std::string folder = platform::joinPath(platform::configHome(), "systemd/user");
        if (platform::createFolders(folder, 0755) != 0 ||
            platform::writeFileAtomically(platform::joinPath(folder, "veldan-activity.service"),
                                          serviceUnitFor(thisBinary())) ||
            platform::writeFileAtomically(platform::joinPath(folder, "veldan-activity.timer"),
                                          dailyTimerUnit)) {
            return "The systemd units could not be written to " + folder + ".";
        }
        if (!run({"daemon-reload"})) return "systemd did not reload its user units.";
    }
    if (!run({"enable", "--now", timerName})) {
        return std::string("systemd did not enable ") + timerName + ".";
    }
    return std::nullopt;
}

std::optional<std::string> DailyTimer::disable() {
    if (!run({"disable", "--now", timerName})) {
        return std::string("systemd did not disable ") + timerName + ".";
    }
    return std::nullopt;
}

}  // namespace veldan::cli
