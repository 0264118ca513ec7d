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

std::string encodeMountInfoField(std::string_view path) {
    std::string out;
    out.reserve(path.size());
    for (const char c : path) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\\') {
            const auto byte = static_cast<unsigned char>(c);
            out += '\\';
            out += static_cast<char>('0' + (byte >> 6));
            out += static_cast<char>('0' + ((byte >> 3) & 7));
            out += static_cast<char>('0' + (byte & 7));
        } else {
            out += c;
        }
    }
    return out;
}

std::optional<std::vector<std::string>> mountPoints() {
    std::ifstream table("/proc/self/mountinfo");
    if (!table) return std::nullopt;
    std::vector<std::string> points;
    std::string line;
    while (std::getline(table, line)) {
        // Fields: mount id, parent id, major:minor, root, mount point, ...
        std::istringstream fields(line);
        std::string id, parent, device, root, mountPoint;
        if (fields >> id >> parent >> device >> root >> mountPoint) {
            points.push_back(decodeMountInfoField(mountPoint));
        }
    }
    if (table.bad() || points.empty()) return std::nullopt;
    return points;
}

std::string mountPointOf(const std::string& resolvedPath) {
    const auto points = mountPoints();
    if (!points) return highestAncestorOnSameDevice(resolvedPath);
    std::string best;
    for (const auto& point : *points) {
        // A later line for the same point is a mount stacked on top, so ties go to it.
        if (isSameOrUnder(resolvedPath, point) && point.size() >= best.size()) best = point;
    }
    return best.empty() ? highestAncestorOnSameDevice(resolvedPath) : best;
}

std::optional<std::string> mountRefusal(const std::string& resolvedPath) {
    const auto points = mountPoints();
    if (!points) {
        return "Veldan could not read the mount table to check what is mounted there, so the "
               "item stayed in place.";
    }
    for (const auto& point : *points) {
        if (isSameOrUnder(point, resolvedPath)) return std::string(holdsMountReason);
    }
    return std::nullopt;
}

}  // namespace veldan::platform
