#pragma once
// Byte and count totals (never negative) stop at the largest value instead of wrapping: a
// corrupt or absurd size must never turn a total negative.

#include <cstdint>
#include <limits>

namespace veldan {

inline int64_t saturatingAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<int64_t>::max() : sum;
}

}  // namespace veldan
