#include "platform/CloneAttributes.hpp"

namespace veldan::platform {

std::optional<CloneAttributes> cloneAttributes(const std::string&) {
    return std::nullopt;
}

}  // namespace veldan::platform
