#pragma once
// One of the collection workers of a duplicate search: takes directories from the shared
// DuplicateCollectWork, lists them, and buckets every regular file of at least 1,000,000
// bytes by its exact size in a result of its own.
//
// Contract: one object per worker thread; run() returns when the walk is over or the
// search is cancelled, after handing its result to the shared work.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "duplicates/DuplicateCollectResult.hpp"
#include "duplicates/DuplicateCollectWork.hpp"
#include "duplicates/DuplicateWalkRules.hpp"
#include "platform/DirectoryReader.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

class DuplicateCollectWorker {
public:
    static constexpr int entriesPerClockCheck = 64;

    // `afterListing` (a test seam, usually empty) is called after each folder is listed,
    // before its subfolders are handed out; like the other references it must outlive the
    // worker.
    DuplicateCollectWorker(DuplicateCollectWork& work, size_t index,
                           const DuplicateWalkRules& rules, const ScanCancellation& cancellation,
                           const std::function<void()>& afterListing);

    void run();

private:
    void listDirectory(const DuplicateDirectory& directory);
    platform::UniqueFd open(const DuplicateDirectory& directory);
    void handleEntry(int directoryFd, const std::string& directory,
                     const DuplicateSharedFolder& shared,
                     const platform::DirectoryEntryView& entry);
    void maybeReport();

    DuplicateCollectWork& work_;
    size_t index_;
    const DuplicateWalkRules& rules_;
    const ScanCancellation& cancellation_;
    const std::function<void()>& afterListing_;
    DuplicateCollectResult result_;
    std::vector<DuplicateDirectory> stack_;
    std::vector<DuplicateDirectory> subfolders_;  // of the folder being listed
    std::vector<char> listing_;
    int entriesSinceClock_ = 0;
    double lastClock_ = 0;
};

}  // namespace veldan
