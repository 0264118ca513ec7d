#pragma once
// A folder the user added to the AI storage measurements, identified by its path.

#include <string>

#include "aistorage/AIStorageKind.hpp"
#include "aistorage/AIStorageToolID.hpp"

namespace veldan {

struct AIStorageCustomLocation {
    std::string path;
    AIStorageToolID tool = AIStorageToolID::other;
    AIStorageKind kind = AIStorageKind::appData;
    friend bool operator==(const AIStorageCustomLocation&,
                           const AIStorageCustomLocation&) = default;
};

}  // namespace veldan
