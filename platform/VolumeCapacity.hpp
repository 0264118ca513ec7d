#pragma once
// Free and total bytes of the volume holding a path (statvfs).

#include <cstdint>
#include <optional>
#include <string>

namespace veldan::platform {

struct VolumeCapacity {
    int64_t available = 0;  // f_bavail x f_frsize: what an unprivileged user may still write
    int64_t total = 0;      // f_blocks x f_frsize
};

// Empty when the call fails or the volume reports no capacity.
std::optional<VolumeCapacity> volumeCapacity(const std::string& path);

}  // namespace veldan::platform
