#include "app/VeldanTool.hpp"

namespace veldan {

std::string_view rawValue(VeldanTool tool) {
    switch (tool) {
        case VeldanTool::duplicates:
            return "duplicates";
        case VeldanTool::aiStorage:
            return "aiStorage";
        case VeldanTool::devCleanup:
            return "devCleanup";
        case VeldanTool::activity:
            return "activity";
    }
    return {};
}

std::optional<VeldanTool> veldanToolFromRawValue(std::string_view raw) {
    for (VeldanTool tool : allVeldanTools) {
        if (rawValue(tool) == raw) return tool;
    }
    return std::nullopt;
}

}  // namespace veldan
