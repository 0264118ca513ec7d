#pragma once
// How the measurement of one AI storage location ended.

namespace veldan {

enum class AIStorageStatus {
    measured,    // walked; its bytes are the allocated size of its files
    unreadable,  // could not be read at all
    linked,      // the path or a folder above it is a symbolic link: not followed, not measured
    missing,     // nothing there
};

}  // namespace veldan
