#include "scan/ClonedFileSpace.hpp"

#include <cstdlib>

#include "platform/CloneAttributes.hpp"

namespace veldan {

std::optional<ClonedFileSpace::Sharing> ClonedFileSpace::sharing(const std::string& path) {
    auto attributes = platform::cloneAttributes(path);
    if (!attributes) return std::nullopt;
    return Sharing{attributes->privateBytes, attributes->cloneID, attributes->cloneCount};
}

int64_t ClonedFileSpace::diskShare(const std::string& path, int64_t allocated) {
    if (!platform::cloneAttributesAvailable()) return allocated;
    return diskShare(path, allocated, &ClonedFileSpace::sharing);
}

int64_t ClonedFileSpace::diskShare(const std::string& path, int64_t allocated, const Query& query) {
    if (allocated < queryFloor) return allocated;
    const auto shared = query(path);
    if (!shared || shared->cloneCount <= 1 || allocated <= shared->privateBytes) return allocated;
    const int64_t perClone =
        (allocated - shared->privateBytes) / static_cast<int64_t>(shared->cloneCount);
    int64_t charged = 0;
    if (__builtin_add_overflow(shared->privateBytes, perClone, &charged)) std::abort();
    return charged;
}

}  // namespace veldan
