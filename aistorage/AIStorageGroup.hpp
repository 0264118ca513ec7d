#pragma once
// The measured locations of one AI tool.

#include <cstdint>
#include <vector>

#include "aistorage/AIStorageLocation.hpp"
#include "aistorage/AIStorageTool.hpp"

namespace veldan {

struct AIStorageGroup {
    AIStorageTool tool;  // without sources
    std::vector<AIStorageLocation> locations;

    int64_t bytes() const;  // saturating sum of its locations
};

}  // namespace veldan
