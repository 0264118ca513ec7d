#include "cli/StatusText.hpp"

#include <algorithm>

#include "cli/Terminal.hpp"
#include "platform/LocaleFormat.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr const char* noMap = "No map yet; run veldan scan to make one.";

// What the last or running scan is doing, when that is worth a word.
std::string scanPart(const WidgetDigest& digest, std::chrono::system_clock::time_point now) {
    const auto state = digest.shownScanState(now);
    if (!state) return {};
    const std::string active =
        Terminal::display(digest.activeScanScopeName.value_or(digest.scopeName));
    switch (*state) {
        case WidgetScanState::scanning:
            return "scanning " + active + "\u2026";
        case WidgetScanState::stopped:
            return "the scan of " + active + " stopped";
        case WidgetScanState::attention:
            return active + " changed during the scan; scan it again";
    }
    return {};
}

std::string freePart(const WidgetDigest& digest) {
    if (digest.totalBytes <= 0) return {};
    return SizeText::string(digest.freeBytes) + " free of " + SizeText::string(digest.totalBytes);
}

int usedPercentage(const WidgetDigest& digest) {
    if (digest.totalBytes <= 0) return 0;
    const long double used = static_cast<long double>(digest.totalBytes - digest.freeBytes);
    const auto percent =
        static_cast<int>(used * 100 / static_cast<long double>(digest.totalBytes) + 0.5L);
    return std::clamp(percent, 0, 100);
}

void append(std::string& line, const std::string& part) {
    if (part.empty()) return;
    if (!line.empty()) line += " \u00b7 ";
    line += part;
}

}  // namespace

std::string statusLine(const std::optional<WidgetDigest>& digest,
                       std::chrono::system_clock::time_point now) {
    if (!digest) return noMap;
    std::string line;
    append(line, freePart(*digest));
    if (digest->hasCompletedScan) {
        append(line, digest->safeCount == 0
                         ? std::string("nothing safe to clean")
                         : SizeText::string(digest->safeBytes) + " safe to clean");
        append(line, std::to_string(digest->reviewCount) + " to review");
        if (digest->needsRefresh) append(line, "outdated");
    } else if (!digest->shownScanState(now)) {
        append(line, "not mapped yet");
    }
    append(line, scanPart(*digest, now));
    const std::string scope = Terminal::display(digest->scopeName);
    return scope.empty() ? line : scope + ": " + line;
}

std::string statusClass(const std::optional<WidgetDigest>& digest,
                        std::chrono::system_clock::time_point now) {
    if (!digest) return "outdated";
    if (auto state = digest->shownScanState(now)) {
        return std::string(widgetScanStateName(*state));
    }
    return digest->needsRefresh || !digest->hasCompletedScan ? "outdated" : "ok";
}

Json waybarJson(const std::optional<WidgetDigest>& digest,
                std::chrono::system_clock::time_point now) {
    if (!digest)
        return Json{
            {"text", "Veldan"}, {"tooltip", noMap}, {"class", "outdated"}, {"percentage", 0}};
    std::string tooltip = statusLine(digest, now);
    if (digest->scannedAt) {
        tooltip += "\nMapped " + SizeText::string(digest->mappedBytes) + " on " +
                   platform::LocaleFormat::system().abbreviatedDateTime(*digest->scannedAt);
    }
    if (digest->movedToTrashBytes > 0) {
        tooltip += "\n" + SizeText::string(digest->movedToTrashBytes) +
                   " moved to Trash so far; it still uses space until Trash is emptied.";
    }
    const bool scanning = digest->shownScanState(now) == WidgetScanState::scanning;
    std::string text = scanning ? "Scanning\u2026" : SizeText::string(digest->freeBytes) + " free";
    if (!scanning && digest->totalBytes <= 0) text = Terminal::display(digest->scopeName);
    return Json{{"text", text},
                {"tooltip", tooltip},
                {"class", statusClass(digest, now)},
                {"percentage", usedPercentage(*digest)}};
}

}  // namespace veldan::cli
