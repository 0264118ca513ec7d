#pragma once
// The one formatter of byte counts and shares, in decimal units (1 KB = 1,000 bytes).

#include <cstdint>
#include <string>

namespace veldan {

class SizeText {
public:
    // "0 GB" below one byte; TB, GB (from 0.1 GB), MB, KB, then plain bytes ("512 B").
    // `compact` drops the decimal from 10 GB and from 10 TB up.
    static std::string string(int64_t bytes, bool compact = false);
    // A percentage: "0%", "<1%", or the nearest whole number up to "100%".
    static std::string share(int64_t part, int64_t total);
};

}  // namespace veldan
