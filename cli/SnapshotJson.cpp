#include "cli/SnapshotJson.hpp"

#include <ctime>

namespace veldan::cli {

void writeNodeJson(JsonWriter& out, const DiskNode& node) {
    out.beginObject();
    out.key("path");
    out.value(node.path);
    out.key("name");
    out.value(node.name);
    out.key("bytes");
    out.value(node.bytes);
    out.key("category");
    out.value(title(node.category));
    out.key("children");
    out.beginArray();
    for (const auto& child : node.children)
        writeNodeJson(out, child);
    out.endArray();
    out.key("isDirectory");
    out.value(node.isDirectory);
    out.key("isSummary");
    out.value(node.isSummary);
    out.key("isPartial");
    out.value(node.isPartial);
    out.key("excludedPaths");
    out.beginArray();
    for (const auto& path : node.excludedPaths)
        out.value(path);
    out.endArray();
    out.endObject();
}

void writeSnapshotJson(JsonWriter& out, const ScanSnapshot& snapshot) {
    out.beginObject();
    out.key("root");
    writeNodeJson(out, snapshot.root);
    out.key("volume");
    out.beginObject();
    out.key("free");
    out.value(snapshot.volume.free);
    out.key("total");
    out.value(snapshot.volume.total);
    out.endObject();
    out.key("discoveredDirectories");
    out.beginObject();
    for (const auto& [path, bytes] : snapshot.discoveredDirectories) {
        out.key(path);
        out.value(bytes);
    }
    out.endObject();
    out.key("largestFiles");
    out.beginArray();
    for (const auto& file : snapshot.largestFiles) {
        out.beginObject();
        out.key("path");
        out.value(file.path);
        out.key("bytes");
        out.value(file.bytes);
        out.endObject();
    }
    out.endArray();
    out.key("visitedFolderCount");
    out.value(snapshot.visitedFolderCount);
    out.key("visitedFileCount");
    out.value(snapshot.visitedFileCount);
    out.key("unreadableItems");
    out.value(snapshot.unreadableItems);
    out.key("unreadablePaths");
    out.beginArray();
    for (const auto& path : snapshot.unreadablePaths)
        out.value(path);
    out.endArray();
    if (snapshot.unreadableReasons) {
        out.key("unreadableReasons");
        out.beginObject();
        for (const auto& [path, reason] : *snapshot.unreadableReasons) {
            out.key(path);
            out.value(reason);
        }
        out.endObject();
    }
    out.key("skippedPhotosLibraries");
    out.value(snapshot.skippedPhotosLibraries);
    out.key("skippedMusicLibraries");
    out.value(snapshot.skippedMusicLibraries);
    out.key("finishedAt");
    out.value(isoDate(snapshot.finishedAt));
    out.endObject();
}

std::string isoDate(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

}  // namespace veldan::cli
