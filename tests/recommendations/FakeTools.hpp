#pragma once
// Search paths for fake package tools. The machine may have real npm, go or pnpm in
// /usr/bin, so a test never puts the system folders on a tool's PATH: it links the few
// standard utilities its fake scripts need into a folder of their own.

#include <sys/stat.h>

#include <initializer_list>
#include <string>

#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::test {

// `dir`/system holding links to the named utilities; returns that folder.
inline std::string systemUtilities(const TempDir& dir, std::initializer_list<const char*> names) {
    const std::string folder = dir / "system";
    makeFolders(folder);
    for (const char* name : names)
        makeSymlink(std::string("/usr/bin/") + name, folder + "/" + name);
    return folder;
}

// An executable /bin/sh script.
inline void writeScript(const std::string& path, const std::string& body) {
    writeFile(path, "#!/bin/sh\n" + body);
    ::chmod(path.c_str(), 0755);
}

}  // namespace veldan::test
