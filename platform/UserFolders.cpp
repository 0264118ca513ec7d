#include "platform/UserFolders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/FileContents.hpp"
#include "platform/Paths.hpp"

namespace veldan::platform {

namespace {

std::string absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return {};
    return standardizePath(value);
}

std::string xdgFolder(const char* variable, const char* fallbackUnderHome) {
    auto value = absoluteVariable(variable);
    return value.empty() ? joinPath(homeFolder(), fallbackUnderHome) : value;
}

// The value of `XDG_DOWNLOAD_DIR="..."` on one line of user-dirs.dirs, unescaped, with
// "$HOME" expanded; nothing for a line that is not that entry or is malformed.
std::optional<std::string> downloadEntry(std::string_view line) {
    constexpr std::string_view key = "XDG_DOWNLOAD_DIR=\"";
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
        line.remove_prefix(1);
    if (line.substr(0, key.size()) != key) return std::nullopt;
    line.remove_prefix(key.size());
    std::string value;
    bool closed = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            closed = true;
            break;
        }
        if (line[i] == '\\' && i + 1 < line.size()) ++i;
        value += line[i];
    }
    if (!closed) return std::nullopt;
    constexpr std::string_view home = "$HOME";
    if (value.compare(0, home.size(), home) == 0 &&
        (value.size() == home.size() || value[home.size()] == '/')) {
        return standardizePath(homeFolder() + value.substr(home.size()));
    }
    if (value.empty() || value.front() != '/') return std::nullopt;
    return standardizePath(value);
}

}  // namespace

std::string homeFolder() {
    auto home = absoluteVariable("HOME");
    if (!home.empty()) return home;
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 16384);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir && found->pw_dir[0] == '/') {
        return standardizePath(found->pw_dir);
    }
    return "/";
}

std::string cacheHome() {
    return xdgFolder("XDG_CACHE_HOME", ".cache");
}
std::string stateHome() {
    return xdgFolder("XDG_STATE_HOME", ".local/state");
}
std::string dataHome() {
    return xdgFolder("XDG_DATA_HOME", ".local/share");
}
std::string configHome() {
    return xdgFolder("XDG_CONFIG_HOME", ".config");
}

std::string downloadsFolder() {
    // The file is small; anything larger is not one xdg-user-dirs wrote.
    auto text = readRegularFile(joinPath(configHome(), "user-dirs.dirs"), 64 * 1024);
    std::optional<std::string> found;
    size_t start = 0;
    while (text && start < text->size()) {
        size_t end = text->find('\n', start);
        if (end == std::string::npos) end = text->size();
        // The shell reads the file top to bottom, so a later entry wins.
        if (auto entry = downloadEntry(std::string_view(*text).substr(start, end - start))) {
            found = std::move(entry);
        }
        start = end + 1;
    }
    return found ? *found : joinPath(homeFolder(), "Downloads");
}

std::string temporaryFolder() {
    auto value = absoluteVariable("TMPDIR");
    return value.empty() ? "/tmp" : value;
}

}  // namespace veldan::platform
