#pragma once
// The systemd user timer that runs `veldan activity check` once a day while no Veldan
// window is open (veldan-activity.timer, Persistent=true so a missed day is caught up).
// When the package did not install the units, enable() writes them to
// $XDG_CONFIG_HOME/systemd/user/ naming this veldan binary.
//
// Contract: each call runs systemctl --user with a time limit on the caller's thread;
// failures are values (one sentence).

#include <optional>
#include <string>

namespace veldan::cli {

class DailyTimer {
public:
    static constexpr const char* timerName = "veldan-activity.timer";

    // A systemd user manager answers.
    static bool available();
    static bool isEnabled();
    // Nothing on success, else why the timer is not enabled.
    static std::optional<std::string> enable();
    static std::optional<std::string> disable();

    // The service unit with ExecStart naming `binary`.
    static std::string serviceUnitFor(const std::string& binary);
};

}  // namespace veldan::cli
