#pragma once
// The folders explored on the current map, so that going back to one shows it at once.
// Each entry remembers the scan generation it was measured for and is only handed out
// for that generation; the owner also empties the cache whenever the map changes. Use
// order decides what goes first once more than 64 folders are held.
//
// Contract: a plain object of one thread.

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "scan/SubtreeScan.hpp"

namespace veldan {

class ExplorationCache {
public:
    static constexpr size_t capacity = 64;

    // The folder measured under `key` for `generation`, which becomes the newest entry;
    // nothing when it is not held or was measured for another generation.
    std::shared_ptr<const SubtreeScan> find(const std::string& key, int64_t generation);
    void remember(const std::string& key, int64_t generation,
                  std::shared_ptr<const SubtreeScan> folder);
    void clear();
    size_t size() const { return entries_.size(); }

private:
    struct Entry {
        int64_t generation = 0;
        std::shared_ptr<const SubtreeScan> folder;
        std::list<std::string>::iterator position;
    };
    void touch(Entry& entry, const std::string& key);

    std::map<std::string, Entry> entries_;
    std::list<std::string> order_;  // oldest first
};

}  // namespace veldan
