#include "scan/VolumeSpace.hpp"

#include "platform/VolumeCapacity.hpp"

namespace veldan {

std::optional<VolumeSpace> VolumeSpace::read(const std::string& path) {
    auto capacity = platform::volumeCapacity(path);
    if (!capacity) return std::nullopt;
    return VolumeSpace{capacity->available, capacity->total};
}

}  // namespace veldan
