#include "platform/Paths.hpp"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <memory>

namespace veldan::platform {

std::string standardizePath(std::string_view path) {
    if (path.empty()) return {};
    const bool absolute = path.front() == '/';
    std::vector<std::string_view> parts;
    for (auto part : pathComponents(path)) {
        if (part == ".") continue;
        if (part == "..") {
            if (!parts.empty() && parts.back() != "..") {
                parts.pop_back();
            } else if (!absolute) {
                parts.push_back(part);
            }
            continue;
        }
        parts.push_back(part);
    }
    std::string out;
    out.reserve(path.size());
    for (auto part : parts) {
        if (absolute || !out.empty()) out += '/';
        out += part;
    }
    if (out.empty()) return absolute ? "/" : ".";
    return out;
}

std::string absolutePath(std::string_view path) {
    if (!path.empty() && path.front() == '/') return standardizePath(path);
    std::string cwd;
    if (auto buffer =
            std::unique_ptr<char, decltype(&std::free)>(::getcwd(nullptr, 0), &std::free)) {
        cwd = buffer.get();
    }
    return standardizePath(joinPath(cwd.empty() ? "/" : cwd, path));
}

std::string resolveSymlinks(std::string_view path) {
    const std::string standardized = standardizePath(path);
    std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(standardized.c_str(), nullptr),
                                                         &std::free);
    if (!resolved) return standardized;
    return resolved.get();
}

std::string_view lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    if (path == "/") return {};
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string parentPath(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    if (slash == 0) return "/";
    return std::string(path.substr(0, slash));
}

std::string pathExtension(std::string_view path) {
    const auto name = lastPathComponent(path);
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return {};
    std::string ext(name.substr(dot + 1));
    for (char& c : ext) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return ext;
}

std::vector<std::string_view> pathComponents(std::string_view path) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    while (start < path.size()) {
        const auto slash = path.find('/', start);
        const auto end = slash == std::string_view::npos ? path.size() : slash;
        if (end > start) parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string joinPath(std::string_view parent, std::string_view name) {
    std::string out(parent);
    if (out.empty() || out.back() != '/') out += '/';
    out += name;
    return out;
}

bool isSameOrUnder(std::string_view path, std::string_view folder) {
    return path == folder || isStrictlyUnder(path, folder);
}

bool isStrictlyUnder(std::string_view path, std::string_view folder) {
    if (folder == "/") return path.size() > 1 && path.front() == '/';
    return path.size() > folder.size() && path.substr(0, folder.size()) == folder &&
           path[folder.size()] == '/';
}

}  // namespace veldan::platform
