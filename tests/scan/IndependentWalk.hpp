#pragma once
// A second, deliberately simple measurement of a tree to check the scanner against:
// allocated bytes of every non-folder entry, each hard-linked inode once, one device,
// never following links. Recursive and path-based, so only for trees of modest depth.

#include <cstdint>
#include <string>

namespace veldan::test {

struct IndependentTotals {
    int64_t bytes = 0;
    int64_t files = 0;
    int64_t folders = 0;  // including the root
};

IndependentTotals independentWalk(const std::string& root);

}  // namespace veldan::test
