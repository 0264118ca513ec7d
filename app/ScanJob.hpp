#pragma once
// One scan run the way every front end runs it, so the command line and the desktop app
// agree on what a scan does besides walking the disk.
//
// Contract: synchronous on the caller's thread (the scanner adds its workers).

#include <optional>
#include <string>

#include "scan/ScanCallbacks.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanOutcome.hpp"

namespace veldan {

struct ScanJobOptions {
    ScanProgress progress;
    ScanPartial partial;
};

class ScanJob {
public:
    // Scans `path`; nothing when cancelled.
    static std::optional<ScanOutcome> run(const std::string& path,
                                          const ScanCancellation& cancellation,
                                          const ScanJobOptions& options = {});
};

}  // namespace veldan
