#pragma once
// One measured AI storage location, identified by its path, and the texts it is shown
// with.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "aistorage/AIStorageKind.hpp"
#include "aistorage/AIStorageStatus.hpp"
#include "platform/ItemIdentity.hpp"

namespace veldan {

struct AIStorageLocation {
    std::string path;
    std::string label;
    AIStorageKind kind = AIStorageKind::appData;
    int64_t bytes = 0;  // allocated bytes of its files, nested locations left out
    AIStorageStatus status = AIStorageStatus::missing;
    bool isCustom = false;
    bool isLinkedPath = false;  // the path or a folder above it is a symbolic link
    bool cleanable = false;
    // The folder as measured (device, inode and birth time tell it apart from a folder
    // created later under the same name); nothing unless a folder was measured.
    std::optional<platform::ItemIdentity> fingerprint;
    bool hasExcludedLocations = false;    // nested locations were measured separately
    bool overlapsCustomLocation = false;  // lies inside or contains a folder the user added

    // The short status a list shows instead of (or beside) the size: "Couldn’t measure",
    // "Link unavailable", "This added folder is no longer available"; empty otherwise.
    std::string statusText() const;
    // The explanations that go with the location, in the order they are shown: why a
    // linked location was not measured, that nested locations are excluded, that it
    // overlaps a folder the user added.
    std::vector<std::string> notes() const;
};

}  // namespace veldan
