#include "cli/StatusText.hpp"

#include "activity/WidgetDigestText.hpp"
#include "cli/Terminal.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

std::string statusLine(const std::optional<WidgetDigest>& digest,
                       std::chrono::system_clock::time_point now) {
    return WidgetDigestText::line(digest, now, &Terminal::display);
}

std::string statusClass(const std::optional<WidgetDigest>& digest,
                        std::chrono::system_clock::time_point now) {
    return WidgetDigestText::stateClass(digest, now);
}

Json waybarJson(const std::optional<WidgetDigest>& digest,
                std::chrono::system_clock::time_point now) {
    if (!digest)
        return Json{{"text", "Veldan"},
                    {"tooltip", WidgetDigestText::noMap},
                    {"class", "outdated"},
                    {"percentage", 0}};
    const bool scanning = digest->shownScanState(now) == WidgetScanState::scanning;
    std::string text = scanning ? "Scanning\u2026" : SizeText::string(digest->freeBytes) + " free";
    if (!scanning && digest->totalBytes <= 0) text = Terminal::display(digest->scopeName);
    return Json{{"text", text},
                {"tooltip", WidgetDigestText::helpText(digest, now, &Terminal::display)},
                {"class", statusClass(digest, now)},
                {"percentage", WidgetDigestText::usedPercentage(*digest)}};
}

}  // namespace veldan::cli
