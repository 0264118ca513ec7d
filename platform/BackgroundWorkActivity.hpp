#pragma once
// Keeps the computer from idling into sleep while Veldan scans or cleans: a logind
// inhibitor ("idle:sleep", mode "block", falling back to "idle" alone where the policy
// refuses sleep) taken over the system D-Bus with the reason "Veldan is scanning or
// cleaning your disk". logind holds it for as long as the descriptor it hands out stays
// open. Where there is no system bus or no logind, nothing is held and nothing fails.
//
// Contract: construct it on the main thread. update() may be called from any thread and returns at once; the D-Bus calls
// run in order on the object's own serial queue ("com.veldan.background-activity"), so
// the caller (the main thread) never waits for the bus. drain() waits for them. The
// destructor releases a held inhibitor.

#include <atomic>
#include <memory>

#include "platform/SerialQueue.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

class BackgroundWorkActivity {
public:
    static constexpr const char* reason = "Veldan is scanning or cleaning your disk";

    BackgroundWorkActivity();
    ~BackgroundWorkActivity();
    BackgroundWorkActivity(const BackgroundWorkActivity&) = delete;
    BackgroundWorkActivity& operator=(const BackgroundWorkActivity&) = delete;

    // busy: take an inhibitor unless one is held; not busy: release it. Repeating the
    // same value does nothing.
    void update(bool busy);
    void drain();
    // Whether an inhibitor is held now (after drain(), the answer to the last update).
    bool isHeld() const { return held_.load(); }

private:
    void apply(bool busy);

    UniqueFd inhibitor_;  // touched only on the queue
    std::atomic<bool> held_{false};
    bool wanted_ = false;  // the last value given to update(), guarded by the queue order
    SerialQueue queue_{"com.veldan.background-activity"};
};

}  // namespace veldan::platform
