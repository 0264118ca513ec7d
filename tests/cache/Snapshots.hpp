#pragma once
// Snapshots for the cache tests: a small one that sets every field (with names that are
// not UTF-8), and large ones of a given number of nodes.

#include <chrono>
#include <cstddef>
#include <string>

#include "scan/ScanSnapshot.hpp"

namespace veldan::test {

// Every field set, including unreadable reasons and a summary node; paths under `root`.
ScanSnapshot sampleSnapshot(const std::string& root);
// A folder tree of about `nodes` kept nodes under `root`, shaped like a scan's.
ScanSnapshot largeSnapshot(const std::string& root, size_t nodes);
// The instant a saved map keeps: whole microseconds.
std::chrono::system_clock::time_point savedPrecision(std::chrono::system_clock::time_point time);

}  // namespace veldan::test
