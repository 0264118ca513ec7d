#pragma once
// The widget digest as `veldan status` shows it: one line for people, and the object that
// status bars such as waybar read ({"text", "tooltip", "class", "percentage"}).
//
// Contract: pure functions of the digest and the moment.

#include <chrono>
#include <optional>
#include <string>

#include "activity/WidgetDigest.hpp"
#include "cli/JsonText.hpp"

namespace veldan::cli {

// "Startup disk: 412.3 GB free of 1 TB · 12.1 GB safe to clean · 2 to review".
std::string statusLine(const std::optional<WidgetDigest>& digest,
                       std::chrono::system_clock::time_point now);
// "scanning", "stopped", "attention", "outdated" or "ok".
std::string statusClass(const std::optional<WidgetDigest>& digest,
                        std::chrono::system_clock::time_point now);
Json waybarJson(const std::optional<WidgetDigest>& digest,
                std::chrono::system_clock::time_point now);

}  // namespace veldan::cli
