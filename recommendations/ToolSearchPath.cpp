#include "recommendations/ToolSearchPath.hpp"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "platform/Collation.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

std::vector<std::string> foldersIn(const std::string& path) {
    std::vector<std::string> names;
    DIR* dir = ::opendir(path.c_str());
    if (dir == nullptr) return names;
    while (auto* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        auto status = platform::statPath(platform::joinPath(path, name), true);
        if (status && status->isDirectory()) names.push_back(name);
    }
    ::closedir(dir);
    return names;
}

}  // namespace

std::vector<std::string> ToolSearchPath::list(const std::string& home,
                                              const std::string& inheritedPath) {
    std::vector<std::string> out;
    std::set<std::string> seen;
    auto add = [&](const std::string& folder) {
        if (!folder.empty() && seen.insert(folder).second) out.push_back(folder);
    };

    const std::string nvm = platform::joinPath(home, ".nvm/versions/node");
    auto versions = foldersIn(nvm);
    // Highest first, as a file browser would sort them ("v20.10.0" above "v20.9.0");
    // names that collate equal fall back to their bytes so the order is always the same.
    std::sort(versions.begin(), versions.end(), [](const std::string& a, const std::string& b) {
        const int order = platform::localizedStandardCompare(a, b);
        return order != 0 ? order > 0 : a > b;
    });
    for (const auto& version : versions)
        add(platform::joinPath(nvm, version) + "/bin");

    add("/opt/homebrew/bin");
    add("/usr/local/bin");
    for (const char* relative : {"Library/pnpm", ".local/bin", ".volta/bin", ".asdf/shims",
                                 ".local/share/mise/shims", ".nvm/current/bin", "go/bin"}) {
        add(platform::joinPath(home, relative));
    }

    // A relative entry (".", "node_modules/.bin") names a folder of whatever project the
    // command was started in, so a cleanup would run a tool that project ships instead of
    // the user's own; only absolute entries are kept.
    size_t start = 0;
    while (start <= inheritedPath.size()) {
        size_t end = inheritedPath.find(':', start);
        if (end == std::string::npos) end = inheritedPath.size();
        const std::string entry = inheritedPath.substr(start, end - start);
        if (entry.starts_with('/')) add(entry);
        start = end + 1;
    }
    return out;
}

std::vector<std::string> ToolSearchPath::current() {
    const char* path = std::getenv("PATH");
    return list(platform::standardizePath(platform::homeFolder()), path ? path : "");
}

std::string ToolSearchPath::find(const std::string& tool,
                                 const std::vector<std::string>& searchPath) {
    for (const auto& folder : searchPath) {
        const std::string candidate = platform::joinPath(folder, tool);
        auto status = platform::statPath(candidate, true);
        if (status && status->isRegularFile() && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate;
        }
    }
    return {};
}

std::string ToolSearchPath::joined(const std::vector<std::string>& searchPath) {
    std::string text;
    for (const auto& folder : searchPath) {
        if (!text.empty()) text += ':';
        text += folder;
    }
    return text;
}

}  // namespace veldan
