#include "scan/HardLinkCollector.hpp"

namespace veldan {

bool HardLinkCollector::insert(FolderIdentity identity) {
    std::lock_guard lock(mutex_);
    return seen_.insert(identity).second;
}

}  // namespace veldan
