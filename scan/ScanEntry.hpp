#pragma once
// One listed entry of a folder: its name (raw bytes) and its status.

#include <string>

#include "platform/FileStatus.hpp"

namespace veldan {

struct ScanEntry {
    std::string name;
    platform::FileStatus status;
};

}  // namespace veldan
