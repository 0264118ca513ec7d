#pragma once
// The clone-sharing attributes of one file: how many bytes are its own, which clone
// family it belongs to and how many files share that family's blocks.
//
// Linux file systems expose no such attributes through a cheap per-file call, so this
// backend answers nothing and every file is charged its allocated size. A backend for a
// copy-on-write file system that does (APFS's getattrlist) fills the record.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan::platform {

struct CloneAttributes {
    int64_t privateBytes = 0;
    uint64_t cloneID = 0;
    uint32_t cloneCount = 0;
};

// True when cloneAttributes() can ever answer; lets the scanner skip building paths.
constexpr bool cloneAttributesAvailable() {
    return false;
}

// Reads the attributes of `path` without following a final link; empty when unknown.
std::optional<CloneAttributes> cloneAttributes(const std::string& path);

}  // namespace veldan::platform
