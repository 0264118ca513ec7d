#pragma once
// The JSON documents of `veldan activity` and `veldan status` for scripts.

#include <chrono>

#include "activity/ActivityArchive.hpp"
#include "activity/WidgetDigest.hpp"
#include "cli/JsonText.hpp"

namespace veldan::cli {

Json activitySnapshotJson(const ActivitySnapshot& snapshot);
Json trackedDownloadJson(const TrackedDownload& download,
                         std::chrono::system_clock::time_point now);
// The whole history, with what the text shows besides it (the change in free space, the
// review marks, the daily check's state).
Json activityJson(const ActivityArchive& history, std::chrono::system_clock::time_point now,
                  bool dailyEnabled, bool dailyDue);
// Every field of the digest; `scanState` as readers show it at `now`.
Json widgetDigestJson(const WidgetDigest& digest, std::chrono::system_clock::time_point now);

}  // namespace veldan::cli
