#pragma once
// How a cleanup tells the rest of the program which paths it moved, so any map that
// measured them is dropped (the session cache) or marked outdated. Executors take one
// of these; the application layer connects it to the scan session cache.

#include <functional>
#include <string>
#include <vector>

namespace veldan {

using ChangedPathsSink = std::function<void(const std::vector<std::string>& movedPaths)>;

}  // namespace veldan
