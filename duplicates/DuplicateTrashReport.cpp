#include "duplicates/DuplicateTrashReport.hpp"

#include <algorithm>

namespace veldan {

int64_t DuplicateTrashReport::movedCount() const {
    return std::count_if(outcomes.begin(), outcomes.end(),
                         [](const DuplicateTrashOutcome& outcome) { return outcome.moved; });
}

std::set<std::string> DuplicateTrashReport::movedPaths() const {
    std::set<std::string> paths;
    for (const auto& outcome : outcomes) {
        if (outcome.moved) paths.insert(outcome.path);
    }
    return paths;
}

std::string DuplicateTrashReport::title() const {
    return movedCount() == static_cast<int64_t>(outcomes.size()) ? "Copies moved to Trash"
                                                                 : "Some copies stayed put";
}

}  // namespace veldan
