#include "platform/DirectoryWithoutLinks.hpp"

#include <fcntl.h>

#include <cerrno>

#include "platform/Paths.hpp"

namespace veldan::platform {

UniqueFd openDirectoryWithoutLinks(const std::string& absolutePath, int& error) {
    if (absolutePath.empty() || absolutePath.front() != '/') {
        error = EINVAL;
        return {};
    }
    UniqueFd current = openDirectory("/", error);
    for (auto component : pathComponents(absolutePath)) {
        if (!current) return {};
        if (component == "." || component == "..") {
            error = EINVAL;
            return {};
        }
        const std::string name(component);
        current = openDirectoryAt(current.get(), name.c_str(), error);
    }
    return current;
}

}  // namespace veldan::platform
