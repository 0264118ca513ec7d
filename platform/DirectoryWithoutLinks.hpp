#pragma once
// Opens a folder by walking its absolute path from "/" one component at a time without
// following any symbolic link, so the descriptor is the folder that the path names
// through real folders only. Cleanup moves items relative to such a descriptor.
//
// Contract: one open per component on the caller's thread; the folders on the way need
// only search permission, the folder itself read permission. An invalid descriptor and
// `error` (ELOOP or ENOTDIR for a link on the way) on failure.

#include <string>

#include "platform/UniqueFd.hpp"

namespace veldan::platform {

UniqueFd openDirectoryWithoutLinks(const std::string& absolutePath, int& error);

}  // namespace veldan::platform
