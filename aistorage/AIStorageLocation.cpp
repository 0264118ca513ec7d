#include "aistorage/AIStorageLocation.hpp"

#include "platform/Wording.hpp"

namespace veldan {

std::string AIStorageLocation::statusText() const {
    switch (status) {
        case AIStorageStatus::measured:
            return {};
        case AIStorageStatus::unreadable:
            return "Couldn\u2019t measure";
        case AIStorageStatus::linked:
            return "Link unavailable";
        case AIStorageStatus::missing:
            return isCustom ? "This added folder is no longer available" : std::string();
    }
    return {};
}

std::vector<std::string> AIStorageLocation::notes() const {
    std::vector<std::string> out;
    if (status == AIStorageStatus::linked) {
        out.push_back(platform::localWording(
            "This location is linked to another folder. Reveal it in Finder to review it."));
    }
    if (hasExcludedLocations) {
        out.emplace_back("Nested locations are shown separately and excluded from this size.");
    }
    if (overlapsCustomLocation) {
        out.emplace_back(
            "Overlaps a folder you added for tracking. It stays out of in-app cleanup.");
    }
    return out;
}

}  // namespace veldan
