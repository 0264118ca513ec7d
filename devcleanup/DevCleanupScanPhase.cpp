#include "devcleanup/DevCleanupScanPhase.hpp"

namespace veldan {

std::string_view devCleanupScanPhaseLabel(DevCleanupScanPhase phase) {
    switch (phase) {
        case DevCleanupScanPhase::discovering:
            return "Finding generated folders";
        case DevCleanupScanPhase::measuring:
            return "Checking generated folders";
    }
    return {};
}

}  // namespace veldan
