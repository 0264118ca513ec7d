#include "platform/VolumeCapacity.hpp"

#include <sys/statvfs.h>

#include <limits>

namespace veldan::platform {

namespace {

int64_t saturatingProduct(unsigned long long count, unsigned long long unit) {
    unsigned long long product = 0;
    if (__builtin_mul_overflow(count, unit, &product) ||
        product > static_cast<unsigned long long>(std::numeric_limits<int64_t>::max())) {
        return std::numeric_limits<int64_t>::max();
    }
    return static_cast<int64_t>(product);
}

}  // namespace

std::optional<VolumeCapacity> volumeCapacity(const std::string& path) {
    struct statvfs info {};
    if (::statvfs(path.c_str(), &info) != 0) return std::nullopt;
    const unsigned long long unit = info.f_frsize ? info.f_frsize : info.f_bsize;
    VolumeCapacity capacity;
    capacity.available = saturatingProduct(info.f_bavail, unit);
    capacity.total = saturatingProduct(info.f_blocks, unit);
    if (capacity.total <= 0) return std::nullopt;
    return capacity;
}

}  // namespace veldan::platform
