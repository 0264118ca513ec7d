#include "cli/CommandScan.hpp"

#include <iostream>

#include "app/CleanupAftermath.hpp"
#include "app/ScanRecording.hpp"
#include "cli/Interrupt.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "platform/BackgroundWorkActivity.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"
#include "scan/ScanFolderIdentity.hpp"

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
    // Held until the digest is written: Ctrl-C or SIGTERM must never leave it saying that
    // a scan is running.
    InterruptScope interrupt(cancellation);
    platform::BackgroundWorkActivity busy;
    busy.update(true);
    ProgressLine progressLine;
    // The folder itself, also when `root` names it through a symbolic link.
    const auto identity = ScanFolderIdentity::read(platform::resolveSymlinks(root));
    ScanRecording recording(root);
    job.reuseWithinSession = false;  // one scan per process: nothing to reuse
    job.progress = [&progressLine, &recording, also = std::move(job.progress)](
                       const std::string& item, int64_t folders, int64_t files) {
        recording.heartbeat();
        if (also) also(item, folders, files);
        if (progressLine.active()) progressLine.show(ProgressLine::scanText(item, folders, files));
    };
    auto outcome = ScanJob::run(root, cancellation, job);
    progressLine.clear();
    // Only a folder replaced during the scan makes the map unusable: Veldan's own state
    // and cache folders may appear inside the scanned one (the home folder) meanwhile.
    const auto now = ScanFolderIdentity::read(platform::resolveSymlinks(root));
    const bool replaced =
        !identity || !now || now->device != identity->device || now->inode != identity->inode;
    if (!outcome) {
        recording.stopped();
    } else if (replaced) {
        recording.changedDuringScan();
        std::cerr << "veldan: This folder changed during the scan. Scan it again for a fresh "
                     "map.\n";
    } else {
        recording.finished(outcome->snapshot,
                           RecommendationBuilder::build(root, outcome->snapshot));
    }
    CleanupAftermath::finishWriting();
    return outcome;
}

}  // namespace veldan::cli
