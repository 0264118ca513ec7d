#pragma once
// A shared "cancelled" flag: set once by whoever stops a task, read by every worker
// between items, never reset. Every long task gets a fresh one.

#include <atomic>

namespace veldan {

class ScanCancellation {
public:
    void cancel() { cancelled_.store(true, std::memory_order_release); }
    bool cancelled() const { return cancelled_.load(std::memory_order_acquire); }

private:
    std::atomic<bool> cancelled_{false};
};

}  // namespace veldan
