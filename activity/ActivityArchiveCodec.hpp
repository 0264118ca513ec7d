#pragma once
// Activity.plist: the activity history as a binary property list.
//
// Keys: "version", "snapshots" (dictionaries of "checkedAt", "freeBytes", "mappedBytes",
// "unreadableItems"), "downloads" ("path", "bytes", "addedAt", "modifiedAt", "device",
// "inode", and for the exact check before a move "size", "createdSeconds",
// "createdNanoseconds", "modifiedSeconds", "modifiedNanoseconds"), "activities" ("id",
// "date", "title", "kind", "bytes", "count"), "lastDailyCheckAt" (when there was one),
// "totalMovedToTrashBytes", "totalMovedToTrashItems", "totalToolCleanups".
//
// Versions: this build writes version 1. A later version may add keys but keeps these
// with their meaning, so a file of a newer version is read for what this build knows;
// it is never overwritten by this build, so that going back to an older Veldan cannot
// strip what a newer one recorded. A file that is damaged keeps whatever entries still
// decode; an entry that does not is left out.
//
// Contract: pure functions, thread-safe.

#include <cstdint>
#include <string>
#include <string_view>

#include "activity/ActivityArchive.hpp"

namespace veldan {

struct DecodedActivityArchive {
    enum class Status {
        current,  // a file this build wrote, or one as good
        newer,    // of a newer version: read, never overwritten
        damaged,  // not an archive, or its version unreadable: what decoded is kept
    };
    Status status = Status::damaged;
    ActivityArchive archive;
};

class ActivityArchiveCodec {
public:
    static constexpr int64_t currentVersion = 1;

    static std::string encode(const ActivityArchive& archive);
    static DecodedActivityArchive decode(std::string_view document);
};

}  // namespace veldan
