#include "app/FolderRescan.hpp"

#include <algorithm>

#include "platform/Paths.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/ScanIssueSamples.hpp"

namespace veldan {

namespace {

constexpr size_t largestFileLimit = 20;

// The node at `path` below `node`, with `node` and every folder on the way in `parents`.
DiskNode* find(DiskNode& node, const std::string& path, std::vector<DiskNode*>& parents) {
    if (node.path == path) return &node;
    for (auto& child : node.children) {
        if (child.isSummary || !platform::isSameOrUnder(path, child.path)) continue;
        parents.push_back(&node);
        return find(child, path, parents);
    }
    return nullptr;
}

template <class Container, class Path>
void eraseUnder(Container& items, const std::string& folder, Path path) {
    std::erase_if(items,
                  [&](const auto& item) { return platform::isSameOrUnder(path(item), folder); });
}

}  // namespace

std::optional<ScanSnapshot> replacingFolder(const ScanSnapshot& map, const ScanSnapshot& folder) {
    const std::string& path = folder.root.path;
    if (path == map.root.path) return folder;  // the whole map was rescanned
    ScanSnapshot updated = map;
    std::vector<DiskNode*> parents;
    DiskNode* node = find(updated.root, path, parents);
    if (!node || parents.empty()) return std::nullopt;

    const int64_t difference = folder.root.bytes - node->bytes;
    DiskNode replacement = folder.root;
    replacement.name = node->name;
    replacement.category = node->category;
    *node = std::move(replacement);
    // Deepest parent first: each re-sort moves the children of one folder only.
    for (auto parent = parents.rbegin(); parent != parents.rend(); ++parent) {
        (*parent)->bytes = std::max<int64_t>(0, saturatingAdd((*parent)->bytes, difference));
        std::stable_sort(
            (*parent)->children.begin(), (*parent)->children.end(),
            [](const DiskNode& a, const DiskNode& b) { return DiskNode::ordersBefore(a, b); });
        if (updated.discoveredDirectories.count((*parent)->path) > 0) {
            updated.discoveredDirectories[(*parent)->path] = (*parent)->bytes;
        }
    }

    auto& discovered = updated.discoveredDirectories;
    std::erase_if(discovered,
                  [&](const auto& entry) { return platform::isSameOrUnder(entry.first, path); });
    for (const auto& [folderPath, bytes] : folder.discoveredDirectories) {
        if (folderPath != path || map.discoveredDirectories.count(path) > 0)
            discovered[folderPath] = bytes;
    }

    eraseUnder(updated.largestFiles, path, [](const LargeFile& file) { return file.path; });
    updated.largestFiles.insert(updated.largestFiles.end(), folder.largestFiles.begin(),
                                folder.largestFiles.end());
    std::sort(updated.largestFiles.begin(), updated.largestFiles.end(),
              [](const LargeFile& a, const LargeFile& b) {
                  return DiskNode::ordersBefore(a.bytes, a.path, b.bytes, b.path);
              });
    if (updated.largestFiles.size() > largestFileLimit)
        updated.largestFiles.resize(largestFileLimit);

    const auto samplesBefore = updated.unreadablePaths.size();
    eraseUnder(updated.unreadablePaths, path, [](const std::string& sample) { return sample; });
    const auto dropped = static_cast<int64_t>(samplesBefore - updated.unreadablePaths.size());
    updated.unreadableItems = saturatingAdd(std::max<int64_t>(0, updated.unreadableItems - dropped),
                                            folder.unreadableItems);
    updated.unreadablePaths.insert(updated.unreadablePaths.end(), folder.unreadablePaths.begin(),
                                   folder.unreadablePaths.end());
    if (updated.unreadablePaths.size() > ScanIssueSamples::limit) {
        updated.unreadablePaths.resize(ScanIssueSamples::limit);
    }
    if (updated.unreadableReasons) {
        std::erase_if(*updated.unreadableReasons, [&](const auto& entry) {
            return platform::isSameOrUnder(entry.first, path);
        });
    }
    if (folder.unreadableReasons) {
        if (!updated.unreadableReasons) updated.unreadableReasons.emplace();
        updated.unreadableReasons->insert(folder.unreadableReasons->begin(),
                                          folder.unreadableReasons->end());
    }
    return updated;
}

}  // namespace veldan
