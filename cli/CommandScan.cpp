#include "cli/CommandScan.hpp"

#include <iostream>

#include "cli/Interrupt.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "platform/Paths.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

std::string commandScope(const std::string& path) {
    return platform::absolutePath(path);
}

std::string commandRoot(const std::string& path) {
    return platform::resolveSymlinks(platform::absolutePath(path));
}

bool reportRootProblem(const std::string& root) {
    const auto problem = DiskScanner::rootProblem(root);
    if (problem) std::cerr << "veldan: " << Terminal::display(*problem) << '\n';
    return problem.has_value();
}

std::shared_ptr<const ScanOutcome> scanForCommand(const std::string& root, ScanJobOptions job) {
    ScanCancellation cancellation;
    InterruptScope interrupt(cancellation);
    ProgressLine progressLine;
    job.reuseWithinSession = false;  // one scan per process: nothing to reuse
    if (progressLine.active() || job.progress) {
        job.progress = [&progressLine, also = std::move(job.progress)](
                           const std::string& item, int64_t folders, int64_t files) {
            if (also) also(item, folders, files);
            progressLine.show(ProgressLine::scanText(item, folders, files));
        };
    }
    auto outcome = ScanJob::run(root, cancellation, job);
    progressLine.clear();
    return outcome;
}

}  // namespace veldan::cli
