#pragma once
// An AI tool with the folders it keeps data in (none in a group of a scan's result).

#include <string>
#include <vector>

#include "aistorage/AIStorageSource.hpp"
#include "aistorage/AIStorageToolID.hpp"

namespace veldan {

struct AIStorageTool {
    AIStorageToolID id = AIStorageToolID::other;
    std::string name;
    std::string symbol;
    std::vector<AIStorageSource> sources;

    // The tool with its name and symbol and no folders.
    static AIStorageTool named(AIStorageToolID id) {
        return {id, std::string(aiStorageToolName(id)), std::string(aiStorageToolSymbol(id)), {}};
    }
};

}  // namespace veldan
