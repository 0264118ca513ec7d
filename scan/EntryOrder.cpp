#include "scan/EntryOrder.hpp"

#include <algorithm>
#include <climits>

#include "platform/Collation.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

// The users folder: "/Users" as on the target platform, and the folder that holds the
// home folder on this one ("/home").
bool isUsersFolder(std::string_view folder, const std::string& home) {
    return folder == "/Users" || (home != "/" && folder == platform::parentPath(home));
}

}  // namespace

std::vector<std::string> EntryOrder::table(std::string_view folder, const std::string& home) {
    if (folder == "/") return {"Users", "Applications", "Library", "private", "System"};
    if (folder == home) {
        return {"Documents", "Downloads", "Desktop",  ".codex", ".claude",
                "Library",   "Movies",    "Pictures", "Music",  ".cache"};
    }
    if (isUsersFolder(folder, home)) return {std::string(platform::lastPathComponent(home))};
    return {};
}

bool EntryOrder::hasPriorityTable(std::string_view folder, const std::string& home) {
    return folder == "/" || folder == home || isUsersFolder(folder, home);
}

std::vector<ScanEntry> EntryOrder::prioritized(std::string_view folder,
                                               std::vector<ScanEntry> entries,
                                               const std::string& home) {
    if (!hasPriorityTable(folder, home)) return entries;
    const auto names = table(folder, home);
    auto priority = [&](const std::string& name) {
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end() ? INT_MAX : static_cast<int>(found - names.begin());
    };
    std::stable_sort(entries.begin(), entries.end(), [&](const ScanEntry& a, const ScanEntry& b) {
        const int pa = priority(a.name);
        const int pb = priority(b.name);
        if (pa != pb) return pa < pb;
        return platform::localizedStandardCompare(a.name, b.name) < 0;
    });
    return entries;
}

}  // namespace veldan
