#pragma once
// What a running or last-interrupted scan is doing, as the widget digest stores it.

#include <optional>
#include <string_view>

namespace veldan {

enum class WidgetScanState { scanning, stopped, attention };

inline std::string_view widgetScanStateName(WidgetScanState state) {
    switch (state) {
        case WidgetScanState::scanning:
            return "scanning";
        case WidgetScanState::stopped:
            return "stopped";
        case WidgetScanState::attention:
            return "attention";
    }
    return "stopped";
}

inline std::optional<WidgetScanState> widgetScanStateNamed(std::string_view name) {
    if (name == "scanning") return WidgetScanState::scanning;
    if (name == "stopped") return WidgetScanState::stopped;
    if (name == "attention") return WidgetScanState::attention;
    return std::nullopt;
}

}  // namespace veldan
