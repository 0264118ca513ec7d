#include "duplicates/DuplicateSelection.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "duplicates/DuplicateWalkRules.hpp"
#include "platform/Collation.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

// System and application locations. A copy below one of them stays even when the user
// chose to search that very folder: a package manager, a service or the boot loader owns
// those files and expects every one of them where it put it. On Linux /etc and /var are
// top-level rather than under "/private", and the kernel's own trees and the package and
// service folders join them.
constexpr std::array<std::string_view, 21> systemPrefixes = {
    "/System", "/Library", "/Applications", "/private", "/usr",   "/bin",   "/sbin",
    "/dev",    "/boot",    "/etc",          "/lib",     "/lib32", "/lib64", "/libx32",
    "/opt",    "/proc",    "/run",          "/snap",    "/srv",   "/sys",   "/var",
};

constexpr int finderOnlyScore = 1000;
constexpr int maximumCountedComponents = 20;

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

// The same application and media packages the search never enters.
bool isPackageComponent(std::string_view component) {
    const std::string extension = platform::pathExtension(component);
    return !extension.empty() && DuplicateWalkRules::isSkippedPackage(extension);
}

std::string lowercaseAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

// Resolved, as the collected paths are: the walk starts from a resolved folder and never
// follows a link, so a home reached through one ("/home" -> "/var/home") must match too.
std::string homePath() {
    return platform::resolveSymlinks(platform::homeFolder());
}

// Components as the platform's URLs count them: the leading "/" of an absolute path is one.
int componentCount(const std::string& path) {
    const auto components = platform::pathComponents(path);
    return static_cast<int>(components.size()) + (!path.empty() && path.front() == '/' ? 1 : 0);
}

}  // namespace

std::optional<std::string> DuplicateSelection::finderOnlyReason(const DuplicateFile& file,
                                                                const std::string& scope) {
    const std::string path = platform::standardizePath(file.path);
    const std::string scopePath = platform::standardizePath(scope);
    const std::string home = homePath();
    const std::string& base = scopePath == "/" ? home : scopePath;
    if (std::any_of(systemPrefixes.begin(), systemPrefixes.end(), [&](std::string_view prefix) {
            return platform::isSameOrUnder(path, prefix);
        })) {
        return "System and app locations stay in Finder.";
    }
    if (!platform::isStrictlyUnder(path, base)) {
        return "Only copies inside the selected folder can be moved to Trash.";
    }
    if (startsWith(path, platform::joinPath(home, "Library/"))) {
        return "Files in your Library stay in Finder.";
    }
    const auto components = platform::pathComponents(path);
    if (std::any_of(components.begin(), components.end(), isPackageComponent)) {
        return "Files inside app or media packages stay in Finder.";
    }
    if (std::any_of(components.begin(), components.end(),
                    [](std::string_view c) { return c == "Library"; })) {
        return "Files inside a Library folder stay in Finder.";
    }
    if (std::any_of(components.begin(), components.end(),
                    [](std::string_view c) { return !c.empty() && c.front() == '.'; })) {
        return "Hidden files and folders stay in Finder.";
    }
    return std::nullopt;
}

int DuplicateSelection::keepScore(const DuplicateFile& file, const std::string& scope) {
    if (finderOnlyReason(file, scope)) return finderOnlyScore;
    const std::string path = platform::standardizePath(file.path);
    const std::string home = homePath();
    const auto under = [&](std::string_view folder) {
        return startsWith(path, platform::joinPath(home, folder) + "/");
    };
    int score = 100;
    if (under("Documents") || under("Pictures") || under("Movies") || under("Music")) score = 180;
    if (under("Desktop")) score += 45;
    if (under("Downloads")) score -= 40;
    const std::string name = lowercaseAscii(platform::lastPathComponent(path));
    if (name.find("copy") != std::string::npos || name.find("duplicate") != std::string::npos ||
        name.find(" (1)") != std::string::npos) {
        score -= 30;
    }
    score -= std::min(componentCount(path), maximumCountedComponents);
    return score;
}

DuplicatePathSet DuplicateSelection::selectExtras(const DuplicateGroup& group,
                                                  const DuplicateFile& keeper,
                                                  const std::string& scope) {
    DuplicatePathSet selected;
    if (std::find(group.files.begin(), group.files.end(), keeper) == group.files.end()) {
        return selected;
    }
    for (const auto& file : group.files) {
        if (file == keeper || finderOnlyReason(file, scope)) continue;
        selected.insert(file.path);
    }
    return selected;
}

DuplicatePathSet DuplicateSelection::smartSelect(const DuplicateGroup& group,
                                                 const std::string& scope) {
    if (group.files.empty()) return {};
    const DuplicateFile* keeper = &group.files.front();
    int keeperScore = keepScore(*keeper, scope);
    for (size_t i = 1; i < group.files.size(); ++i) {
        const DuplicateFile& file = group.files[i];
        const int score = keepScore(file, scope);
        bool better = score > keeperScore;
        if (score == keeperScore) {
            // Creation seconds only: copies made in one go differ in nanoseconds, and the
            // user thinks of them as equally old.
            if (file.createdSeconds != keeper->createdSeconds) {
                better = file.createdSeconds < keeper->createdSeconds;
            } else {
                better = platform::localizedStandardCompare(file.path, keeper->path) < 0;
            }
        }
        if (better) {
            keeper = &file;
            keeperScore = score;
        }
    }
    return selectExtras(group, *keeper, scope);
}

}  // namespace veldan
