#include "activity/WidgetScope.hpp"

#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

WidgetScope WidgetScope::of(const std::string& path) {
    WidgetScope scope;
    scope.path = platform::absolutePath(path);
    const std::string home = platform::absolutePath(platform::homeFolder());
    if (scope.path == "/") {
        scope.isStartupDisk = true;
        scope.name = "Startup disk";
    } else if (scope.path == home ||
               platform::resolveSymlinks(scope.path) == platform::resolveSymlinks(home)) {
        // Commands scan the folder with links resolved; a home reached through a link
        // (/home -> /usr/home) is still the home folder.
        scope.isHomeFolder = true;
        scope.name = "Home folder";
    } else {
        scope.name = std::string(platform::lastPathComponent(scope.path));
    }
    return scope;
}

}  // namespace veldan
