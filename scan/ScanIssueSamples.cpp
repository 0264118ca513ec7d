#include "scan/ScanIssueSamples.hpp"

#include <algorithm>

#include "scan/ScanIssueReason.hpp"

namespace veldan {

bool ScanIssueSamples::isActionable(std::string_view reason) {
    return reason == ScanIssueReason::accessDenied ||
           reason == ScanIssueReason::photosAccessRequired ||
           reason == ScanIssueReason::mediaAccessRequired;
}

void ScanIssueSamples::add(const std::string& path, std::string_view reason,
                           std::vector<std::string>& paths,
                           std::map<std::string, std::string>& reasons) {
    if (std::find(paths.begin(), paths.end(), path) != paths.end()) return;
    if (paths.size() < limit) {
        paths.push_back(path);
        reasons[path] = std::string(reason);
        return;
    }
    if (!isActionable(reason)) return;
    const bool alreadyShown = std::any_of(
        reasons.begin(), reasons.end(), [&](const auto& entry) { return entry.second == reason; });
    if (alreadyShown) return;
    const auto evicted = std::find_if(paths.begin(), paths.end(), [&](const std::string& sampled) {
        auto found = reasons.find(sampled);
        return found == reasons.end() || !isActionable(found->second);
    });
    if (evicted == paths.end()) return;
    reasons.erase(*evicted);
    paths.erase(evicted);
    paths.push_back(path);
    reasons[path] = std::string(reason);
}

}  // namespace veldan
