#include "cli/DuplicatesJson.hpp"

#include <ctime>

namespace veldan::cli {

namespace {

std::string isoTime(std::chrono::system_clock::time_point when) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(when);
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

Json fileJson(const DuplicateScanResult& result, const DuplicateFile& file,
              const DuplicatesJsonParts& parts) {
    Json entry = {{"path", file.path}};
    if (parts.selection) {
        entry["selected"] = parts.selection->contains(file.path);
        const auto reason = DuplicateSelection::finderOnlyReason(file, result.scope);
        entry["reason"] = reason ? Json(*reason) : Json(nullptr);
    }
    return entry;
}

Json reportJson(const DuplicateTrashReport& report) {
    Json outcomes = Json::array();
    for (const auto& outcome : report.outcomes) {
        outcomes.push_back(
            {{"path", outcome.path}, {"moved", outcome.moved}, {"detail", outcome.detail}});
    }
    return {{"id", report.id},
            {"title", report.title()},
            {"movedCount", report.movedCount()},
            {"logicalBytesMoved", report.logicalBytesMoved},
            {"outcomes", std::move(outcomes)}};
}

}  // namespace

Json duplicatesJson(const DuplicateScanResult& result, const std::vector<DuplicateGroup>& shown,
                    const DuplicatesJsonParts& parts) {
    Json groups = Json::array();
    for (const auto& group : shown) {
        Json files = Json::array();
        for (const auto& file : group.files)
            files.push_back(fileJson(result, file, parts));
        groups.push_back({{"id", group.id},
                          {"bytesPerFile", group.bytesPerFile},
                          {"copies", group.files.size()},
                          {"extraBytes", group.extraBytes()},
                          {"sha256", platform::lowercaseHex(group.digest)},
                          {"files", std::move(files)}});
    }
    Json document = {{"scope", result.scope},
                     {"scannedAt", isoTime(result.scannedAt)},
                     {"revision", result.revision},
                     {"filesVisited", result.filesVisited},
                     {"unreadableFiles", result.unreadableFiles},
                     {"extraBytes", result.extraBytes},
                     {"groupCount", result.groups.size()},
                     {"minimumExtraBytes", parts.minimumExtraBytes},
                     {"query", parts.query},
                     {"groups", std::move(groups)}};
    if (parts.report) document["trash"] = reportJson(*parts.report);
    return document;
}

}  // namespace veldan::cli
