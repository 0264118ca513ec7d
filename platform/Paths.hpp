#pragma once
// Path text helpers. Paths are raw bytes (std::string); nothing here assumes UTF-8.
//
// Contract: pure functions apart from those that say they read the file system.

#include <string>
#include <string_view>
#include <vector>

namespace veldan::platform {

// Lexical clean-up: collapses repeated slashes, drops "." components, removes ".."
// together with the component before it, and drops a trailing slash ("/" stays "/").
// A relative path stays relative.
std::string standardizePath(std::string_view path);

// Makes `path` absolute against the working folder, then standardizes it.
std::string absolutePath(std::string_view path);

// Resolves every symbolic link (realpath). Reads the file system. When the path cannot
// be resolved (missing, too long, unreadable) the standardized path is returned as is.
std::string resolveSymlinks(std::string_view path);

// "" for "/" and for an empty path; otherwise the text after the last slash.
std::string_view lastPathComponent(std::string_view path);
// "/" for "/a"; "" for a path without a slash.
std::string parentPath(std::string_view path);
// Lower-cased text after the last "." of the last component; "" when there is none
// or the name starts with its only dot.
std::string pathExtension(std::string_view path);
// Components of an absolute or relative path, without empty ones.
std::vector<std::string_view> pathComponents(std::string_view path);
// parent + "/" + name, without doubling the slash of the root.
std::string joinPath(std::string_view parent, std::string_view name);

// True when `path` equals `folder` or lies below it ("/" contains everything).
bool isSameOrUnder(std::string_view path, std::string_view folder);
// True when `path` lies strictly below `folder`.
bool isStrictlyUnder(std::string_view path, std::string_view folder);

}  // namespace veldan::platform
