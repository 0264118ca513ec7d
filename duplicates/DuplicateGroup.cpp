#include "duplicates/DuplicateGroup.hpp"

#include <limits>

namespace veldan {

int64_t DuplicateGroup::extraBytes() const {
    if (files.size() < 2) return 0;
    int64_t extra = 0;
    if (__builtin_mul_overflow(bytesPerFile, static_cast<int64_t>(files.size() - 1), &extra)) {
        return std::numeric_limits<int64_t>::max();
    }
    return extra;
}

}  // namespace veldan
