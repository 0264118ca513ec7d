#include "aistorage/AIStorageSnapshot.hpp"

#include "scan/SaturatingAdd.hpp"

namespace veldan {

int64_t AIStorageSnapshot::bytes() const {
    int64_t total = 0;
    for (const auto& group : groups)
        total = saturatingAdd(total, group.bytes());
    return total;
}

const AIStorageLocation* AIStorageSnapshot::location(const std::string& path) const {
    for (const auto& group : groups) {
        for (const auto& found : group.locations) {
            if (found.path == path) return &found;
        }
    }
    return nullptr;
}

}  // namespace veldan
