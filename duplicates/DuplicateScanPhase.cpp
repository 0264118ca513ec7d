#include "duplicates/DuplicateScanPhase.hpp"

namespace veldan {

std::string_view duplicateScanPhaseLabel(DuplicateScanPhase phase) {
    switch (phase) {
        case DuplicateScanPhase::collecting:
            return "Looking for matching sizes";
        case DuplicateScanPhase::sampling:
            return "Comparing file samples";
        case DuplicateScanPhase::verifying:
            return "Verifying entire files";
    }
    return {};
}

}  // namespace veldan
