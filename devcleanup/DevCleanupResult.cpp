#include "devcleanup/DevCleanupResult.hpp"

#include "recommendations/RecommendationBuilder.hpp"

namespace veldan {

int64_t DevCleanupResult::unionBytes(const std::vector<std::string>& paths) const {
    // The same rule as a recommendation's footprint: sizes of nested folders are already
    // inside their outermost ancestor's.
    return RecommendationBuilder::footprint(paths, {}, itemBytesByPath);
}

}  // namespace veldan
