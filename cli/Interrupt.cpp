#include "cli/Interrupt.hpp"

#include <atomic>

namespace veldan::cli {

namespace {

std::atomic<ScanCancellation*> current{nullptr};
std::atomic<bool> signalled{false};

void onSignal(int) {
    // Only lock-free atomics here: this runs in signal context.
    signalled.store(true);
    if (auto* cancellation = current.load()) cancellation->cancel();
}

}  // namespace

InterruptScope::InterruptScope(ScanCancellation& cancellation) {
    signalled.store(false);
    current.store(&cancellation);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, &previousInt_);
    ::sigaction(SIGTERM, &action, &previousTerm_);
}

InterruptScope::~InterruptScope() {
    ::sigaction(SIGINT, &previousInt_, nullptr);
    ::sigaction(SIGTERM, &previousTerm_, nullptr);
    current.store(nullptr);
}

bool InterruptScope::interrupted() {
    return signalled.load();
}

}  // namespace veldan::cli
