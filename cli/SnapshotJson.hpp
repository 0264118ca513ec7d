#pragma once
// The JSON form of scan results for scripts, with the serialisation keys of the records
// (categories by their raw value, dates as ISO 8601 in UTC). Streamed, because the
// snapshot of a whole disk is large.

#include <chrono>
#include <string>

#include "cli/JsonWriter.hpp"
#include "scan/DiskNode.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

void writeNodeJson(JsonWriter& out, const DiskNode& node);
void writeSnapshotJson(JsonWriter& out, const ScanSnapshot& snapshot);
// "2026-11-21T12:39:00Z"
std::string isoDate(std::chrono::system_clock::time_point time);

}  // namespace veldan::cli
