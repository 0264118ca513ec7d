#include "scan/SizeText.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace veldan {

namespace {

std::string format(const char* pattern, double value) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

}  // namespace

std::string SizeText::string(int64_t bytes, bool compact) {
    if (bytes < 1) return "0 GB";
    const double value = static_cast<double>(bytes);
    const double tera = value / 1e12;
    const double giga = value / 1e9;
    const double mega = value / 1e6;
    const double kilo = value / 1e3;
    if (tera >= 1) return format(compact && tera >= 10 ? "%.0f TB" : "%.1f TB", tera);
    if (giga >= 10) return format(compact ? "%.0f GB" : "%.1f GB", giga);
    if (giga >= 0.1) return format("%.1f GB", giga);
    if (mega >= 1) return format("%.0f MB", mega);
    if (kilo >= 1) return format("%.0f KB", kilo);
    return std::to_string(bytes) + " B";
}

std::string SizeText::share(int64_t part, int64_t total) {
    if (total < 1 || part < 1) return "0%";
    const double percent = static_cast<double>(static_cast<uint64_t>(part)) /
                           static_cast<double>(static_cast<uint64_t>(total)) * 100.0;
    if (percent < 1) return "<1%";
    return std::to_string(static_cast<long long>(std::lround(std::min(percent, 100.0)))) + "%";
}

}  // namespace veldan
