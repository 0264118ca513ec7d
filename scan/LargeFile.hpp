#pragma once
// One entry of the largest-files list; the path is its identity.

#include <cstdint>
#include <string>

namespace veldan {

struct LargeFile {
    std::string path;
    int64_t bytes = 0;
    friend bool operator==(const LargeFile&, const LargeFile&) = default;
};

}  // namespace veldan
