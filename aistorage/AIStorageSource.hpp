#pragma once
// One folder an AI tool keeps data in: a catalogue row, or a folder the user added.

#include <string>

#include "aistorage/AIStorageKind.hpp"

namespace veldan {

struct AIStorageSource {
    std::string path;  // absolute and standardized
    std::string label;
    AIStorageKind kind = AIStorageKind::appData;
    bool isCustom = false;   // added by the user; never cleanable
    bool cleanable = false;  // may be offered for a move to the Trash
    friend bool operator==(const AIStorageSource&, const AIStorageSource&) = default;
};

}  // namespace veldan
