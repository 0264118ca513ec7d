#include "tests/cache/Snapshots.hpp"

#include <chrono>

namespace veldan::test {

namespace {

DiskNode file(const std::string& parent, const std::string& name, int64_t bytes,
              DiskCategory category = DiskCategory::files) {
    DiskNode node;
    node.path = parent + "/" + name;
    node.name = name;
    node.bytes = bytes;
    node.category = category;
    return node;
}

}  // namespace

ScanSnapshot sampleSnapshot(const std::string& root) {
    ScanSnapshot snapshot;
    DiskNode& top = snapshot.root;
    top.path = root;
    top.name = root.substr(root.rfind('/') + 1);
    top.isDirectory = true;
    top.category = DiskCategory::files;

    DiskNode modules = file(root, "node_modules", 7'000'000'000, DiskCategory::build);
    modules.isDirectory = true;
    DiskNode odd = file(root, "caf\xE9-\xFF\xFE", 3'000'000'000);  // Latin-1, not UTF-8
    odd.isDirectory = true;
    odd.isPartial = true;
    odd.children.push_back(file(odd.path, "r\xC3\xA9sum\xC3\xA9.pdf", 2'500'000'000));
    odd.children.push_back(file(odd.path, "line\nbreak \xEE\xBE\x80", 400'000'000));
    odd.children.push_back(
        DiskNode::summary(odd.path, 100'000'000, {odd.children[0].path, odd.children[1].path}));
    top.children = {modules, odd, file(root, "model.gguf", 1'000'000'000, DiskCategory::models)};
    top.bytes = 11'000'000'000;

    snapshot.volume = VolumeSpace{123'456'789'012, 994'662'584'320};
    snapshot.discoveredDirectories = {{modules.path, modules.bytes}, {root, top.bytes}};
    snapshot.largestFiles = {{odd.children[0].path, 2'500'000'000},
                             {root + "/model.gguf", 1'000'000'000}};
    snapshot.visitedFolderCount = 1234;
    snapshot.visitedFileCount = 56789;
    snapshot.unreadableItems = 3;
    snapshot.unreadablePaths = {root + "/locked", root + "/gone\xFF"};
    snapshot.unreadableReasons = std::map<std::string, std::string>{
        {root + "/locked", "Access denied"},
        {root + "/gone\xFF", "Moved or removed during the scan"}};
    snapshot.skippedPhotosLibraries = 1;
    snapshot.skippedMusicLibraries = 0;
    // The instant a saved map keeps: whole microseconds.
    snapshot.finishedAt =
        std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
    return snapshot;
}

}  // namespace veldan::test
