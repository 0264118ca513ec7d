#pragma once
// Helpers shared by the generated-folder tests: project trees laid out from short
// descriptions, and a search that must succeed.

#include <map>
#include <string>
#include <vector>

#include "devcleanup/DevCleanupResult.hpp"

namespace veldan::test {

// Creates each entry under `root`: "a/b/" a folder, "a/f" a small file (folders on the
// way are made), "a/l@target" a symbolic link to `target`.
void layOut(const std::string& root, const std::vector<std::string>& entries);

// Searches `scope` (with `home` as the home folder) and fails the test when that gives
// no result.
DevCleanupResult searched(const std::string& scope, const std::string& home = "/nonexistent");

// Each item's path relative to `root`, with its kind.
std::map<std::string, DevCleanupKind> foundKinds(const DevCleanupResult& result,
                                                 const std::string& root);

const DevCleanupItem& itemAt(const DevCleanupResult& result, const std::string& path);

}  // namespace veldan::test
