// Writes the fuzzer's seed corpus into the folder named on the command line: saved maps
// made by the encoder (a small one with names that are not UTF-8, one without reasons,
// a bare one) and near misses (another version, cut short).

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include "cache/ScanArchive.hpp"
#include "platform/FileContents.hpp"

namespace {

using namespace veldan;

ScanSnapshot sample(const std::string& root) {
    ScanSnapshot snapshot;
    snapshot.root = DiskNode{root, "Proj\xE9ts", 9'000'000, DiskCategory::files, {}, true};
    DiskNode modules{
        root + "/node_modules", "node_modules", 6'000'000, DiskCategory::build, {}, true};
    DiskNode odd{root + "/caf\xE9\xFF",
                 "caf\xE9\xFF",
                 2'000'000,
                 DiskCategory::files,
                 {},
                 true,
                 false,
                 true};
    odd.children.push_back(
        DiskNode{odd.path + "/r\xC3\xA9sum\xC3\xA9", "r\xC3\xA9sum\xC3\xA9", 1'500'000});
    odd.children.push_back(DiskNode::summary(odd.path, 500'000, {odd.children[0].path}));
    snapshot.root.children = {modules, odd};
    snapshot.volume = VolumeSpace{100'000'000, 500'000'000};
    snapshot.discoveredDirectories = {{modules.path, modules.bytes}};
    snapshot.largestFiles = {{odd.children[0].path, 1'500'000}};
    snapshot.visitedFolderCount = 12;
    snapshot.visitedFileCount = 345;
    snapshot.unreadableItems = 1;
    snapshot.unreadablePaths = {root + "/locked"};
    snapshot.unreadableReasons =
        std::map<std::string, std::string>{{root + "/locked", "Access denied"}};
    snapshot.skippedPhotosLibraries = 1;
    snapshot.finishedAt = std::chrono::system_clock::now();
    return snapshot;
}

bool write(const std::string& folder, const std::string& name, const std::string& contents) {
    std::ofstream out(folder + "/" + name, std::ios::binary);
    out << contents;
    return bool(out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::string folder = argv[1];
    if (platform::createFolders(folder, 0755) != 0) return 1;
    const std::string scope = "/home/ana/Proj\xE9ts";
    const RootIdentity identity{2049, 1234, scope, 2049, 1234};

    ScanSnapshot full = sample(scope);
    ScanSnapshot noReasons = full;
    noReasons.unreadableReasons.reset();
    ScanSnapshot bare;
    bare.root = DiskNode{"/", "", 0, DiskCategory::system, {}, true};

    const std::string encoded = *ScanArchive::encode(scope, identity, full, SIZE_MAX);
    std::string otherVersion = encoded;
    // The integer 2 (0x10 0x02, shared by every use) becomes 1: the version among them.
    if (auto at = otherVersion.find(std::string("\x10\x02", 2)); at != std::string::npos) {
        otherVersion[at + 1] = '\x01';
    }
    const bool written =
        write(folder, "full.plist", encoded) &&
        write(folder, "no-reasons.plist",
              *ScanArchive::encode(scope, identity, noReasons, SIZE_MAX)) &&
        write(folder, "bare.plist", *ScanArchive::encode("/", identity, bare, SIZE_MAX)) &&
        write(folder, "other-version.plist", otherVersion) &&
        write(folder, "truncated.plist", encoded.substr(0, encoded.size() / 2));
    return written ? 0 : 1;
}
