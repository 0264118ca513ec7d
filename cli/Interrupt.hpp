#pragma once
// Ctrl-C (SIGINT) and SIGTERM cancel the task under way through its ScanCancellation,
// so it stops cleanly instead of dying mid-write.
//
// Contract: one scope at a time; the previous handlers come back on destruction.

#include <csignal>

#include "scan/ScanCancellation.hpp"

namespace veldan::cli {

class InterruptScope {
public:
    explicit InterruptScope(ScanCancellation& cancellation);
    ~InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

    // True once a signal arrived during this scope.
    static bool interrupted();

private:
    struct sigaction previousInt_ {};
    struct sigaction previousTerm_ {};
};

}  // namespace veldan::cli
