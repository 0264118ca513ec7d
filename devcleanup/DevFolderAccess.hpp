#pragma once
// Reaching a folder by its path again, at any length: generated folders can lie deeper
// than PATH_MAX, where a path is too long for a single system call and is walked one
// component at a time instead.
//
// Contract: plain system calls on the caller's thread; failures are values.

#include <optional>
#include <string>

#include "platform/FileStatus.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan {

// Opens the folder at the absolute `path` for listing, never following a link in its
// last component. Invalid with `error` set on failure.
platform::UniqueFd openFolderAtPath(const std::string& path, int& error);

// The status of the absolute `path` without following a final link.
std::optional<platform::FileStatus> statusAtPath(const std::string& path);

}  // namespace veldan
