#include "platform/MountPoints.hpp"

#include <fstream>
#include <sstream>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan::platform {

namespace {

bool isOctal(char c) {
    return c >= '0' && c <= '7';
}

// Walks up while the parent is still on the same device. Bind mounts of one device are
// not told apart this way, which is why the mount table comes first.
std::string highestAncestorOnSameDevice(const std::string& path) {
    auto status = statPath(path, true);
    if (!status) return "/";
    std::string current = path;
    while (current != "/") {
        const std::string parent = parentPath(current);
        auto parentStatus = statPath(parent, true);
        if (!parentStatus || parentStatus->device != status->device) break;
        current = parent;
    }
    return current;
}

}  // namespace

std::string decodeMountInfoField(std::string_view field) {
    std::string out;
    out.reserve(field.size());
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) &&
            isOctal(field[i + 2]) && isOctal(field[i + 3])) {
            out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                     (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

std::string mountPointOf(const std::string& resolvedPath) {
    std::ifstream table("/proc/self/mountinfo");
    if (!table) return highestAncestorOnSameDevice(resolvedPath);
    std::string best;
    std::string line;
    while (std::getline(table, line)) {
        // Fields: mount id, parent id, major:minor, root, mount point, ...
        std::istringstream fields(line);
        std::string id, parent, device, root, mountPoint;
        if (!(fields >> id >> parent >> device >> root >> mountPoint)) continue;
        const std::string decoded = decodeMountInfoField(mountPoint);
        // A later line for the same point is a mount stacked on top, so ties go to it.
        if (isSameOrUnder(resolvedPath, decoded) && decoded.size() >= best.size()) best = decoded;
    }
    return best.empty() ? highestAncestorOnSameDevice(resolvedPath) : best;
}

}  // namespace veldan::platform
