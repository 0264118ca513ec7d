#include "cli/DevJson.hpp"

#include "cli/SnapshotJson.hpp"
#include "devcleanup/DevCleanupKind.hpp"

namespace veldan::cli {

namespace {

void writeItem(JsonWriter& out, const DevCleanupItem& item, const DevJsonParts& parts) {
    const auto& rule = devCleanupKindRule(item.kind);
    out.beginObject();
    out.key("path");
    out.value(item.path);
    out.key("kind");
    out.value(rule.name);
    out.key("label");
    out.value(rule.label);
    out.key("bytes");
    out.value(item.bytes);
    out.key("modifiedAt");
    out.value(
        isoDate(std::chrono::system_clock::time_point(std::chrono::seconds(item.modifiedSeconds))));
    out.key("unreadableItems");
    out.value(item.unreadableItems);
    if (parts.selection) {
        out.key("selected");
        out.value(parts.selection->contains(item.path));
    }
    out.endObject();
}

void writeReport(JsonWriter& out, const DevCleanupReport& report) {
    out.beginObject();
    out.key("id");
    out.value(report.id);
    out.key("movedCount");
    out.value(report.movedCount());
    out.key("bytesMoved");
    out.value(report.bytesMoved);
    out.key("moves");
    out.beginArray();
    for (const auto& move : report.moves) {
        out.beginObject();
        out.key("path");
        out.value(move.path);
        out.key("moved");
        out.value(move.moved);
        out.key("detail");
        out.value(move.detail);
        out.endObject();
    }
    out.endArray();
    out.endObject();
}

}  // namespace

void writeDevJson(JsonWriter& out, const DevCleanupResult& result, const DevListing& listing,
                  const DevJsonParts& parts) {
    out.beginObject();
    out.key("scope");
    out.value(result.scope);
    out.key("scannedAt");
    out.value(isoDate(result.scannedAt));
    out.key("revision");
    out.value(result.revision);
    out.key("unreadableItems");
    out.value(result.unreadableItems);
    out.key("foundCount");
    out.value(static_cast<int64_t>(result.items.size()));
    out.key("kinds");
    out.beginArray();
    for (const auto& rule : devCleanupKindRules()) {
        if (!parts.filter || parts.filter->kinds.empty() || parts.filter->kinds.contains(rule.kind))
            out.value(rule.name);
    }
    out.endArray();
    out.key("olderThan");
    out.value(parts.filter ? parts.filter->olderThanText : std::string());
    out.key("bytes");
    out.value(listing.shownBytes);
    out.key("items");
    out.beginArray();
    for (const auto* item : listing.shown)
        writeItem(out, *item, parts);
    out.endArray();
    if (parts.report) {
        out.key("trash");
        writeReport(out, *parts.report);
    }
    out.endObject();
}

}  // namespace veldan::cli
