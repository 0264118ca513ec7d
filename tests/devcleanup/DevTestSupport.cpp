#include "tests/devcleanup/DevTestSupport.hpp"

#include <stdexcept>

#include "devcleanup/DevCleanupScanner.hpp"
#include "tests/support/Files.hpp"

namespace veldan::test {

void layOut(const std::string& root, const std::vector<std::string>& entries) {
    for (const auto& entry : entries) {
        const auto at = entry.find('@');
        const std::string path = root + "/" + entry.substr(0, at);
        const std::string parent = path.substr(0, path.rfind('/'));
        makeFolders(parent);
        if (at != std::string::npos) {
            makeSymlink(entry.substr(at + 1), path);
        } else if (entry.back() == '/') {
            makeFolders(path.substr(0, path.size() - 1));
        } else {
            writeFile(path, "{}");
        }
    }
}

DevCleanupResult searched(const std::string& scope, const std::string& home) {
    ScanCancellation cancellation;
    auto result = DevCleanupScanner(home).scan(scope, cancellation);
    if (!result) throw std::runtime_error("no result for " + scope);
    return std::move(*result);
}

std::map<std::string, DevCleanupKind> foundKinds(const DevCleanupResult& result,
                                                 const std::string& root) {
    std::map<std::string, DevCleanupKind> found;
    for (const auto& item : result.items)
        found[item.path.substr(root.size() + 1)] = item.kind;
    return found;
}

const DevCleanupItem& itemAt(const DevCleanupResult& result, const std::string& path) {
    for (const auto& item : result.items) {
        if (item.path == path) return item;
    }
    throw std::runtime_error("no item at " + path);
}

}  // namespace veldan::test
