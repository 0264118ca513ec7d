#pragma once
// The JSON document of `veldan duplicates --json`, for scripts. Paths that are not valid
// UTF-8 survive byte for byte (JsonText writes each such byte as \udcXX).

#include "cli/JsonText.hpp"
#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateSelection.hpp"
#include "duplicates/DuplicateTrashReport.hpp"

namespace veldan::cli {

struct DuplicatesJsonParts {
    int64_t minimumExtraBytes = 0;
    std::string query;
    const DuplicatePathSet* selection = nullptr;   // adds "selected" and "reason" per file
    const DuplicateTrashReport* report = nullptr;  // adds "trash"
};

Json duplicatesJson(const DuplicateScanResult& result, const std::vector<DuplicateGroup>& shown,
                    const DuplicatesJsonParts& parts);

}  // namespace veldan::cli
