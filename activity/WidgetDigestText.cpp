#include "activity/WidgetDigestText.hpp"

#include <algorithm>

#include "platform/LocaleFormat.hpp"
#include "scan/SizeText.hpp"

namespace veldan {

namespace {

// What the last or running scan is doing, when that is worth a word.
std::string scanPart(const WidgetDigest& digest, std::chrono::system_clock::time_point now,
                     const WidgetDigestText::Display& display) {
    const auto state = digest.shownScanState(now);
    if (!state) return {};
    const std::string active = display(digest.activeScanScopeName.value_or(digest.scopeName));
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

void append(std::string& line, const std::string& part) {
    if (part.empty()) return;
    if (!line.empty()) line += " \u00b7 ";
    line += part;
}

}  // namespace

std::string WidgetDigestText::line(const std::optional<WidgetDigest>& digest, Clock::time_point now,
                                   const Display& display) {
    if (!digest) return std::string(noMap);
    std::string text;
    append(text, freePart(*digest));
    if (digest->hasCompletedScan) {
        append(text, digest->safeCount == 0
                         ? std::string("nothing safe to clean")
                         : SizeText::string(digest->safeBytes) + " safe to clean");
        append(text, std::to_string(digest->reviewCount) + " to review");
        if (digest->needsRefresh) append(text, "outdated");
    } else if (!digest->shownScanState(now)) {
        append(text, "not mapped yet");
    }
    append(text, scanPart(*digest, now, display));
    const std::string scope = display(digest->scopeName);
    return scope.empty() ? text : scope + ": " + text;
}

std::string WidgetDigestText::helpText(const std::optional<WidgetDigest>& digest,
                                       Clock::time_point now, const Display& display) {
    std::string text = line(digest, now, display);
    if (!digest) return text;
    if (digest->scannedAt) {
        text += "\nMapped " + SizeText::string(digest->mappedBytes) + " on " +
                platform::LocaleFormat::system().abbreviatedDateTime(*digest->scannedAt);
    }
    if (digest->movedToTrashBytes > 0) {
        text += "\n" + SizeText::string(digest->movedToTrashBytes) +
                " moved to Trash so far; it still uses space until Trash is emptied.";
    }
    return text;
}

std::string WidgetDigestText::stateClass(const std::optional<WidgetDigest>& digest,
                                         Clock::time_point now) {
    if (!digest) return "outdated";
    if (auto state = digest->shownScanState(now)) {
        return std::string(widgetScanStateName(*state));
    }
    return digest->needsRefresh || !digest->hasCompletedScan ? "outdated" : "ok";
}

int WidgetDigestText::usedPercentage(const WidgetDigest& digest) {
    if (digest.totalBytes <= 0) return 0;
    const long double used = static_cast<long double>(digest.totalBytes - digest.freeBytes);
    const auto percent =
        static_cast<int>(used * 100 / static_cast<long double>(digest.totalBytes) + 0.5L);
    return std::clamp(percent, 0, 100);
}

}  // namespace veldan
