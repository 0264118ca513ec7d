#pragma once
// Free and total space of the volume holding a scanned folder.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan {

struct VolumeSpace {
    int64_t free = 0;   // bytes available to the user
    int64_t total = 0;  // bytes of capacity

    // Empty when either capacity cannot be read.
    static std::optional<VolumeSpace> read(const std::string& path);
    friend bool operator==(const VolumeSpace&, const VolumeSpace&) = default;
};

}  // namespace veldan
