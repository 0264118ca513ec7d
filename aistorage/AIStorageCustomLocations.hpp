#pragma once
// The folders the user added for measuring, kept in the preferences under
// "veldanAIStorageCustomLocations" as one binary property list: an array of
// dictionaries with "path" (text), "tool" (the tool's raw value) and "kind" (the kind's
// ordinal). Adding one never touches its files; removing one only forgets it.
//
// Contract: the list operations are pure apart from reading the file system to check a
// folder; load() and save() read and write the preferences (thread-safe).

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "aistorage/AIStorageCustomLocation.hpp"
#include "aistorage/AIStorageTool.hpp"

namespace veldan {

class AIStorageCustomLocations {
public:
    static constexpr const char* preferenceKey = "veldanAIStorageCustomLocations";
    static constexpr const char* refusal = "This folder is unavailable or already added.";

    // The stored list (empty when none is stored); nothing when the stored value cannot be
    // read, so that a caller never saves over folders it could not see.
    static std::optional<std::vector<AIStorageCustomLocation>> load();
    static bool save(const std::vector<AIStorageCustomLocation>& locations);

    static std::string encode(const std::vector<AIStorageCustomLocation>& locations);
    // Entries with an unknown tool or kind, or without an absolute path, are skipped.
    static std::optional<std::vector<AIStorageCustomLocation>> decode(std::string_view data);

    // Adds the folder at `path` (made absolute, links resolved). False, and nothing
    // changes, when it is not an existing folder or it is already in the list or in the
    // catalogue.
    static bool add(std::vector<AIStorageCustomLocation>& locations, const std::string& path,
                    AIStorageToolID tool, AIStorageKind kind,
                    const std::vector<AIStorageTool>& catalogue);
    // Changes the tool and kind of the added folder `path`; false when it is not in the list.
    static bool update(std::vector<AIStorageCustomLocation>& locations, const std::string& path,
                       AIStorageToolID tool, AIStorageKind kind);
    // Forgets the added folder `path`; false when it is not in the list.
    static bool remove(std::vector<AIStorageCustomLocation>& locations, const std::string& path);

    // The path an added folder is kept under: absolute, standardized, links resolved.
    static std::string keyPath(const std::string& path);
};

}  // namespace veldan
