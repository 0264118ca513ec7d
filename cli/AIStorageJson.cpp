#include "cli/AIStorageJson.hpp"

#include "aistorage/AIStorageScanner.hpp"
#include "cli/SnapshotJson.hpp"

namespace veldan::cli {

namespace {

std::string statusRawValue(AIStorageStatus status) {
    switch (status) {
        case AIStorageStatus::measured:
            return "measured";
        case AIStorageStatus::unreadable:
            return "unreadable";
        case AIStorageStatus::linked:
            return "linked";
        case AIStorageStatus::missing:
            return "missing";
    }
    return "missing";
}

Json locationJson(const AIStorageLocation& location, const AIStorageSelection* selection) {
    Json entry = {{"path", location.path},
                  {"label", location.label},
                  {"kind", aiStorageKindRawValue(location.kind)},
                  {"bytes", location.bytes},
                  {"status", statusRawValue(location.status)},
                  {"statusText", location.statusText()},
                  {"isCustom", location.isCustom},
                  {"isLinkedPath", location.isLinkedPath},
                  {"hasExcludedLocations", location.hasExcludedLocations},
                  {"overlapsCustomLocation", location.overlapsCustomLocation},
                  {"cleanable", AIStorageScanner::isApprovedCleanupLocation(location)},
                  {"notes", location.notes()}};
    if (selection) entry["selected"] = selection->paths().contains(location.path);
    return entry;
}

Json reportJson(const AIStorageCleanupReport& report) {
    Json moves = Json::array();
    for (const auto& move : report.moves) {
        moves.push_back({{"path", move.path},
                         {"label", move.label},
                         {"moved", move.moved},
                         {"detail", move.detail},
                         {"bytes", move.bytes}});
    }
    return {{"id", report.id},
            {"title", report.title()},
            {"detail", report.detail()},
            {"movedCount", report.movedCount()},
            {"logicalBytesMoved", report.logicalBytesMoved()},
            {"moves", std::move(moves)},
            {"refresh", AIStorageCleanupReport::refreshPrompt}};
}

}  // namespace

Json aiStorageJson(const AIStorageSnapshot& snapshot, const AIStorageSelection* selection,
                   const AIStorageCleanupReport* report, bool needsRefreshAfterMove) {
    Json groups = Json::array();
    for (const auto& group : snapshot.groups) {
        Json locations = Json::array();
        for (const auto& location : group.locations)
            locations.push_back(locationJson(location, selection));
        groups.push_back({{"tool", aiStorageToolRawValue(group.tool.id)},
                          {"name", group.tool.name},
                          {"bytes", group.bytes()},
                          {"locations", std::move(locations)}});
    }
    Json document = {{"scannedAt", isoDate(snapshot.scannedAt)},
                     {"bytes", snapshot.bytes()},
                     {"unreadableItems", snapshot.unreadableItems},
                     {"groups", std::move(groups)}};
    if (report) {
        document["cleanup"] = reportJson(*report);
        document["needsRefreshAfterMove"] = needsRefreshAfterMove;
    }
    return document;
}

Json customLocationsJson(const std::vector<AIStorageCustomLocation>& locations) {
    Json out = Json::array();
    for (const auto& location : locations) {
        out.push_back({{"path", location.path},
                       {"tool", aiStorageToolRawValue(location.tool)},
                       {"kind", aiStorageKindRawValue(location.kind)}});
    }
    return out;
}

}  // namespace veldan::cli
