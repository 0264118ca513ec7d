#pragma once
// The words of the widget digest, shared by its readers (`veldan status`, status bars, the
// desktop app's tray icon): one line for people ("Startup disk: 412.3 GB free of 1 TB ·
// 12.1 GB safe to clean · 2 to review"), a longer help text, the state class and the used
// share of the volume.
//
// Contract: pure functions of the digest and the moment. Names from the file system go
// through `display`, which makes them safe for the reader's medium (a terminal escapes
// controls, a window replaces what cannot be shown).

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "activity/WidgetDigest.hpp"

namespace veldan {

class WidgetDigestText {
public:
    using Clock = std::chrono::system_clock;
    using Display = std::function<std::string(std::string_view)>;

    static constexpr std::string_view noMap = "No map yet; run veldan scan to make one.";

    static std::string line(const std::optional<WidgetDigest>& digest, Clock::time_point now,
                            const Display& display);
    // The line, then when the map was made and what moved to the Trash so far.
    static std::string helpText(const std::optional<WidgetDigest>& digest, Clock::time_point now,
                                const Display& display);
    // "scanning", "stopped", "attention", "outdated" or "ok".
    static std::string stateClass(const std::optional<WidgetDigest>& digest, Clock::time_point now);
    // The volume's used space in percent, 0 to 100.
    static int usedPercentage(const WidgetDigest& digest);
};

}  // namespace veldan
