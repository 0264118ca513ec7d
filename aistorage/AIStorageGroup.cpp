#include "aistorage/AIStorageGroup.hpp"

#include "scan/SaturatingAdd.hpp"

namespace veldan {

int64_t AIStorageGroup::bytes() const {
    int64_t total = 0;
    for (const auto& location : locations)
        total = saturatingAdd(total, location.bytes);
    return total;
}

}  // namespace veldan
