#include "tests/scan/TreeGenerator.hpp"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <random>
#include <vector>

#include "tests/support/Files.hpp"

namespace veldan::test {

namespace {

void makeSocket(const std::string& path) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() < sizeof address.sun_path) {
        path.copy(address.sun_path, path.size());
        ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    }
    ::close(fd);
}

}  // namespace

void generateTree(const std::string& root, unsigned seed, int topLevelFolders) {
    std::mt19937 random(seed);
    auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    std::vector<std::string> files;
    std::vector<std::string> folders;
    makeFolders(root);
    for (int top = 0; top < topLevelFolders; ++top) {
        std::string folder = root + "/top" + std::to_string(top);
        const int depth = pick(1, 9);
        for (int level = 0; level < depth; ++level) {
            folder += "/level" + std::to_string(level);
            makeFolders(folder);
            folders.push_back(folder);
            const int count = pick(0, 25);
            for (int i = 0; i < count; ++i) {
                const std::string file = folder + "/f" + std::to_string(i);
                const int kind = pick(0, 9);
                if (kind == 0) {
                    writeSparseFile(file, int64_t{1} << pick(20, 30));
                } else {
                    writeFileOfSize(file, pick(0, 200'000), static_cast<unsigned>(i));
                }
                files.push_back(file);
            }
        }
        makeFolders(root + "/top" + std::to_string(top) + "/empty");
    }
    // Hard links, some across top-level folders (measured by different workers).
    for (int i = 0; i < 12 && !files.empty(); ++i) {
        const auto& source =
            files[static_cast<size_t>(pick(0, static_cast<int>(files.size()) - 1))];
        const auto& folder =
            folders[static_cast<size_t>(pick(0, static_cast<int>(folders.size()) - 1))];
        ::link(source.c_str(), (folder + "/hard" + std::to_string(i)).c_str());
    }
    // Links that must never be followed: to a file, to a folder, up the tree, to "/".
    makeFolders(root + "/top0");
    makeFolders(root + "/top1");
    makeSymlink(files.empty() ? "/etc/hostname" : files.front(), root + "/top0/link-to-file");
    makeSymlink("..", root + "/top0/loop-up");
    makeSymlink(root, root + "/top1/loop-root");
    makeSymlink("/", root + "/top1/slash");
    // A link whose target is too long to live in its inode has blocks of its own, and two
    // names here: it is charged once, like any file with several names.
    makeSymlink(std::string(300, 'x'), root + "/top1/long-link");
    ::link((root + "/top1/long-link").c_str(), (root + "/top0/long-link-again").c_str());
    ::mkfifo((root + "/top0/fifo").c_str(), 0644);
    makeSocket(root + "/top1/socket");
    // Opaque folders, one of each kind, with content below.
    makeFolders(root + "/proj/node_modules/pkg/lib");
    writeFileOfSize(root + "/proj/node_modules/pkg/lib/index.js", 12'345);
    writeFile(root + "/proj/package.json", "{}");
    makeFolders(root + "/proj/.git/objects/ab");
    writeFileOfSize(root + "/proj/.git/objects/ab/cdef", 4'321);
    makeFolders(root + "/rust/target/debug");
    writeFile(root + "/rust/Cargo.toml", "[package]\n");
    writeFileOfSize(root + "/rust/target/debug/app", 70'000);
    makeFolders(root + "/py/.venv/lib");
    writeFile(root + "/py/.venv/pyvenv.cfg", "home = /usr\n");
    writeFileOfSize(root + "/py/.venv/lib/site.py", 9'000);
    writeFileOfSize(root + "/loose-file", 5'000);
}

}  // namespace veldan::test
