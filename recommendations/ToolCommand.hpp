#pragma once
// Runs one command of a package tool for the cleanup executor: the inherited environment
// with PATH replaced by the tool search path, standard output and error to one private
// temporary file ("veldan-tool-" + UUID, removed again), a time limit, and the failures
// turned into the sentences shown to the user.
//
// Contract: blocks the calling thread for at most the time limit plus the grace period
// (plus a bounded wait after SIGKILL). Thread-safe.

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recommendations/CleanupReport.hpp"

namespace veldan {

struct ToolCommandSettings {
    std::vector<std::string> searchPath;  // also the child's PATH
    std::chrono::milliseconds timeLimit{180'000};
    std::chrono::milliseconds grace{3'000};
    std::function<bool()> stopRequested;
};

struct ToolCommandOutcome {
    std::string output;  // the whole output when captured
    std::optional<CleanupError> error;
};

class ToolCommand {
public:
    // A captured answer longer than this is not a folder path.
    static constexpr size_t captureLimit = 4096;
    // How much of an uncaptured output ends up in an error message; a captured one (at
    // most `captureLimit`) is used whole.
    static constexpr size_t tailBytes = 600;

    // `tool` names the tool in messages; `isCleanup` adds that some entries may already
    // be gone when the command fails.
    static ToolCommandOutcome run(const std::string& tool, const std::string& executable,
                                  const std::vector<std::string>& arguments, bool capturingOutput,
                                  bool isCleanup, const ToolCommandSettings& settings);
};

}  // namespace veldan
