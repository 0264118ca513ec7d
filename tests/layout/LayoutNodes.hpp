#pragma once
// Small trees for layout tests, built in memory: the layouts read nothing but the nodes.

#include <cstdint>
#include <string>
#include <vector>

#include "scan/DiskNode.hpp"

namespace veldan::test {

inline DiskNode fileNode(const std::string& path, int64_t bytes) {
    DiskNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.bytes = bytes;
    return node;
}

inline DiskNode folderNode(const std::string& path, std::vector<DiskNode> children) {
    DiskNode node = fileNode(path, 0);
    node.isDirectory = true;
    for (const auto& child : children)
        node.bytes += child.bytes;
    node.children = std::move(children);
    return node;
}

// A folder of files under `path` with the given sizes, in the given order.
inline DiskNode folderOfFiles(const std::string& path, const std::vector<int64_t>& sizes) {
    std::vector<DiskNode> children;
    for (size_t i = 0; i < sizes.size(); ++i) {
        children.push_back(fileNode(path + "/f" + std::to_string(i), sizes[i]));
    }
    return folderNode(path, std::move(children));
}

}  // namespace veldan::test
