#pragma once
// The tool screens that open beside the map. The raw value is what the command line's
// `--tool NAME` and the preferences use.

#include <optional>
#include <string_view>

namespace veldan {

enum class VeldanTool { duplicates, aiStorage, devCleanup, activity };

inline constexpr VeldanTool allVeldanTools[] = {VeldanTool::duplicates, VeldanTool::aiStorage,
                                                VeldanTool::devCleanup, VeldanTool::activity};

// "duplicates", "aiStorage", "devCleanup", "activity".
std::string_view rawValue(VeldanTool tool);
// Exact match of a raw value; nothing for anything else.
std::optional<VeldanTool> veldanToolFromRawValue(std::string_view raw);

}  // namespace veldan
