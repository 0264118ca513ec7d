#pragma once
// The order in which a folder's entries are visited, so the folders a user cares about
// most appear first on a live map. Only the startup disk "/", the users folder and the
// home folder have a table of well-known names; every other folder is visited in
// listing order, which costs nothing.

#include <string>
#include <string_view>
#include <vector>

#include "scan/ScanEntry.hpp"

namespace veldan {

class EntryOrder {
public:
    static bool hasPriorityTable(std::string_view folder, const std::string& home);

    // A stable sort by the name's position in the folder's table (names outside it last),
    // then by the order a file browser shows names in. Unchanged for other folders.
    static std::vector<ScanEntry> prioritized(std::string_view folder,
                                              std::vector<ScanEntry> entries,
                                              const std::string& home);

private:
    static std::vector<std::string> table(std::string_view folder, const std::string& home);
};

}  // namespace veldan
