#pragma once
// The root of a parallel scan: takes the files of the scanned folder's own listing, hands
// its subfolders to workers one at a time, collects their finished nodes under the
// 17-child rule, sums the workers' counts for progress, and builds partial roots on one
// serial queue.
//
// Contract: every public method may be called from any worker; one lock guards all
// state, and no callback runs under it. After close() returns, no partial is delivered.

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/SerialQueue.hpp"
#include "scan/DiskCategory.hpp"
#include "scan/KeptChildren.hpp"
#include "scan/ParallelChildResult.hpp"
#include "scan/ScanCallbacks.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/WalkReporter.hpp"

namespace veldan {

class ParallelRootState {
public:
    static constexpr size_t maximumWorkers = 4;

    // `cancellation` must outlive the state; once it is set, no partial is delivered.
    ParallelRootState(std::string rootPath, ScanProgress progress, ScanPartial partial,
                      const ScanCancellation& cancellation);
    ~ParallelRootState();

    // The files of the scanned folder, measured while it was listed, and the number of
    // subfolders that takeNext() then hands out.
    void finishListing(KeptChildren files, int64_t bytes, size_t subfolderCount);
    // The next subfolder to measure, or empty when all were handed out.
    std::optional<size_t> takeNext();
    void finish(size_t index, ParallelChildResult result);
    // Counts that no worker walked (the kept children of a stopped scan).
    void addCounts(int64_t folders, int64_t files);
    // A worker's final counts, once it has nothing left to walk.
    void settleCounts(size_t worker, int64_t folders, int64_t files);
    void close();

    // The finished root: kept children plus "Other" and all finished bytes. Moves the
    // children out; call once, after every worker has returned.
    DiskNode takeRoot();
    int64_t totalFolders() const;
    int64_t totalFiles() const;

    // Binds one worker's walk reports to the scan. Counts are the worker's running totals
    // over everything it walked; partial nodes belong to the subfolder set with setIndex(),
    // or to the scanned folder itself while it is listed (listing()).
    class Reporter : public WalkReporter {
    public:
        Reporter(ParallelRootState& state, size_t worker) : state_(state), worker_(worker) {}
        void listing() { listing_ = true; }
        void setIndex(size_t index) {
            listing_ = false;
            index_ = index;
        }
        bool wantsPartials() const override;
        void counts(int64_t folders, int64_t files, const std::string& currentItem) override;
        void partial(DiskNode node) override;

    private:
        ParallelRootState& state_;
        size_t worker_;
        size_t index_ = 0;
        bool listing_ = false;
    };

private:
    void setCounts(size_t worker, int64_t folders, int64_t files, const std::string& item);
    void updateActive(size_t index, DiskNode node);
    void updateListing(DiskNode node);
    void sumCounts();        // caller holds the lock
    void schedulePartial();  // caller holds the lock
    void deliverPartials();
    DiskNode buildRoot(KeptChildren children, int64_t bytes, bool partial) const;

    const std::string rootPath_;
    const DiskCategory category_;
    const ScanProgress reportProgress_;
    const ScanPartial reportPartial_;
    const ScanCancellation& cancellation_;
    std::unique_ptr<platform::SerialQueue> partialQueue_;

    mutable std::mutex mutex_;
    size_t childCount_ = 0;
    size_t nextIndex_ = 0;
    KeptChildren finishedVisible_;
    int64_t finishedBytes_ = 0;
    std::optional<DiskNode> listing_;  // the scanned folder while its own listing runs
    std::map<size_t, DiskNode> active_;
    std::array<int64_t, maximumWorkers> workerFolders_{};
    std::array<int64_t, maximumWorkers> workerFiles_{};
    int64_t otherFolders_ = 0;
    int64_t otherFiles_ = 0;
    int64_t totalFolders_ = 0;
    int64_t totalFiles_ = 0;
    double lastProgress_ = 0;
    double lastPartial_ = 0;
    bool pendingPartial_ = false;
    bool partialDeliveryQueued_ = false;
    bool closed_ = false;
};

}  // namespace veldan
