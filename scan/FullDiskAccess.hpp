#pragma once
// Whether the protected locations of the user's home can be read. Four probe locations
// under the home's Library folder are tried; on Linux they are normally absent, and
// the answer is then `unknown` (nothing could be tested), never `denied`.

#include <string>

namespace veldan {

enum class FullDiskAccessState { granted, denied, unknown };

class FullDiskAccess {
public:
    static constexpr const char* message =
        "Veldan couldn\u2019t read a protected location. Check Privacy & Security \u2192 Full Disk "
        "Access in System Settings, then return and check again. You can still scan accessible "
        "folders.";

    static FullDiskAccessState check();
    static FullDiskAccessState check(const std::string& home);
};

}  // namespace veldan
