#include "app/ExplorationCache.hpp"

namespace veldan {

std::shared_ptr<const SubtreeScan> ExplorationCache::find(const std::string& key,
                                                          int64_t generation) {
    auto found = entries_.find(key);
    if (found == entries_.end() || found->second.generation != generation) return nullptr;
    touch(found->second, key);
    return found->second.folder;
}

void ExplorationCache::remember(const std::string& key, int64_t generation,
                                std::shared_ptr<const SubtreeScan> folder) {
    auto [found, inserted] = entries_.try_emplace(key);
    found->second.generation = generation;
    found->second.folder = std::move(folder);
    if (inserted) {
        found->second.position = order_.insert(order_.end(), key);
    } else {
        touch(found->second, key);
    }
    while (entries_.size() > capacity) {
        entries_.erase(order_.front());
        order_.pop_front();
    }
}

void ExplorationCache::clear() {
    entries_.clear();
    order_.clear();
}

void ExplorationCache::touch(Entry& entry, const std::string& key) {
    order_.erase(entry.position);
    entry.position = order_.insert(order_.end(), key);
}

}  // namespace veldan
