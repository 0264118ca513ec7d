#pragma once
// Builds a random but repeatable tree that exercises every measuring rule: nested
// folders beyond the mapped depth, files of many sizes, sparse files, hard links across
// top-level folders, symbolic links (including loops), FIFOs, sockets, empty folders and
// the opaque folders (node_modules, .git, Cargo target, venv).

#include <string>

namespace veldan::test {

void generateTree(const std::string& root, unsigned seed, int topLevelFolders = 6);

}  // namespace veldan::test
