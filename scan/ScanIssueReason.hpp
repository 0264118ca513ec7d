#pragma once
// The reason texts recorded for items a scan could not read or measure.

#include <string_view>

namespace veldan::ScanIssueReason {

inline constexpr std::string_view couldNotRead = "Could not read this item";
inline constexpr std::string_view vanished = "Moved or removed during the scan";
inline constexpr std::string_view accessDenied = "Access denied";
inline constexpr std::string_view sizeUnavailable = "Allocated size unavailable";
inline constexpr std::string_view photosAccessRequired = "Photos access is required";
inline constexpr std::string_view mediaAccessRequired = "Media Library access is required";
inline constexpr std::string_view couldNotMeasure = "Could not measure this item";

// Shown after the number of libraries skipped for want of authorisation.
inline constexpr std::string_view photosSkippedHint =
    " skipped. Photos access is separate from Full Disk Access. Scan again after allowing it.";
inline constexpr std::string_view mediaSkippedHint =
    " skipped. Media access is separate from Full Disk Access. Scan again after allowing it.";

// The reason for a failed system call: vanished items and refused permissions are told
// apart from other read failures because the user can act on them differently.
std::string_view forErrno(int error);

}  // namespace veldan::ScanIssueReason
