#include "platform/UserFolders.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

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

std::string temporaryFolder() {
    auto value = absoluteVariable("TMPDIR");
    return value.empty() ? "/tmp" : value;
}

}  // namespace veldan::platform
