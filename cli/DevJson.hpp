#pragma once
// The JSON document of `veldan dev --json`, for scripts, streamed so that a search with a
// hundred thousand folders is never held twice. Paths that are not valid UTF-8 survive
// byte for byte (each such byte is written as \udcXX).

#include "cli/DevListing.hpp"
#include "cli/JsonWriter.hpp"
#include "devcleanup/DevCleanupReport.hpp"
#include "devcleanup/DevCleanupResult.hpp"

namespace veldan::cli {

struct DevJsonParts {
    const DevFilter* filter = nullptr;
    const std::set<std::string>* selection = nullptr;  // adds "selected" per folder
    const DevCleanupReport* report = nullptr;          // adds "trash"
};

void writeDevJson(JsonWriter& out, const DevCleanupResult& result, const DevListing& listing,
                  const DevJsonParts& parts);

}  // namespace veldan::cli
