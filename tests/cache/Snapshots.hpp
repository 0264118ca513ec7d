#pragma once
// The snapshot of the cache tests: a small one that sets every field, with names that are
// not UTF-8.

#include <string>

#include "scan/ScanSnapshot.hpp"

namespace veldan::test {

// Every field set, including unreadable reasons and a summary node; paths under `root`.
ScanSnapshot sampleSnapshot(const std::string& root);

}  // namespace veldan::test
