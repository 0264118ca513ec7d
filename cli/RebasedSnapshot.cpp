#include "cli/RebasedSnapshot.hpp"

#include <utility>

#include "platform/Paths.hpp"

namespace veldan::cli {

namespace {

// `from` is a link, so never "/"; `to` may be "/".
std::string rebased(const std::string& path, std::string_view from, std::string_view to) {
    if (!platform::isSameOrUnder(path, from)) return path;
    const std::string rest = path.substr(from.size());  // empty, or "/" and more
    return to == "/" && !rest.empty() ? rest : std::string(to) + rest;
}

void rebase(DiskNode& node, std::string_view from, std::string_view to) {
    node.path = rebased(node.path, from, to);
    std::set<std::string> excluded;
    for (const auto& path : node.excludedPaths)
        excluded.insert(rebased(path, from, to));
    node.excludedPaths = std::move(excluded);
    for (auto& child : node.children)
        rebase(child, from, to);
}

template <typename Value>
std::map<std::string, Value> rebasedKeys(const std::map<std::string, Value>& map,
                                         std::string_view from, std::string_view to) {
    std::map<std::string, Value> out;
    for (const auto& [path, value] : map)
        out.emplace(rebased(path, from, to), value);
    return out;
}

}  // namespace

ScanSnapshot rebasedSnapshot(ScanSnapshot snapshot, std::string_view from, std::string_view to) {
    rebase(snapshot.root, from, to);
    snapshot.discoveredDirectories = rebasedKeys(snapshot.discoveredDirectories, from, to);
    for (auto& file : snapshot.largestFiles)
        file.path = rebased(file.path, from, to);
    for (auto& path : snapshot.unreadablePaths)
        path = rebased(path, from, to);
    if (snapshot.unreadableReasons) {
        snapshot.unreadableReasons = rebasedKeys(*snapshot.unreadableReasons, from, to);
    }
    return snapshot;
}

}  // namespace veldan::cli
