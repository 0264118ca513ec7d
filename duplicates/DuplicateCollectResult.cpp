#include "duplicates/DuplicateCollectResult.hpp"

#include <utility>

namespace veldan {

void DuplicateCollectResult::add(DuplicateFile file) {
    const int64_t size = file.bytes;
    auto found = bySize.find(size);
    if (found == bySize.end()) {
        bySize.emplace(size, DuplicateSizeBucket{DuplicateCandidate{std::move(file)}, {}});
    } else {
        found->second.others.push_back(DuplicateCandidate{std::move(file)});
    }
}

void DuplicateCollectResult::merge(DuplicateCollectResult&& other) {
    filesVisited += other.filesVisited;
    unreadable += other.unreadable;
    for (auto& [size, bucket] : other.bySize) {
        auto found = bySize.find(size);
        if (found == bySize.end()) {
            bySize.emplace(size, std::move(bucket));
            continue;
        }
        auto& others = found->second.others;
        others.push_back(std::move(bucket.first));
        for (auto& candidate : bucket.others)
            others.push_back(std::move(candidate));
    }
    other.bySize.clear();
}

}  // namespace veldan
