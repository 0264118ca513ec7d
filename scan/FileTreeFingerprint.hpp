#pragma once
// A cheap summary of a folder tree's contents: XOR and wrapping sum of per-entry values
// and their count. The measuring code chooses what each entry contributes.

#include <cstdint>

namespace veldan {

struct FileTreeFingerprint {
    uint64_t xorValue = 0;  // "xor" is a C++ keyword
    uint64_t sum = 0;
    uint64_t count = 0;

    void fold(uint64_t value) {
        xorValue ^= value;
        sum += value;  // unsigned: wraps by definition
        ++count;
    }
    friend bool operator==(const FileTreeFingerprint&, const FileTreeFingerprint&) = default;
};

}  // namespace veldan
