#include "cli/CommandScan.hpp"

#include "cli/Interrupt.hpp"
#include "cli/ProgressLine.hpp"
#include "platform/Paths.hpp"

namespace veldan::cli {

std::string commandRoot(const std::string& path) {
    return platform::resolveSymlinks(platform::absolutePath(path));
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
