#pragma once
// The root of a parallel scan: hands top-level entries to workers one at a time,
// collects their finished nodes under the 17-child rule, sums their counts for
// progress, and builds partial roots on one serial queue.
//
// Contract: every public method may be called from any worker; one lock guards all
// state, and no callback runs under it. After close() returns, no partial is delivered.

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
    // `cancellation` must outlive the state; once it is set, no partial is delivered.
    ParallelRootState(std::string rootPath, size_t childCount, ScanProgress progress,
                      ScanPartial partial, const ScanCancellation& cancellation);
    ~ParallelRootState();

    // The next top-level entry to measure, or empty when all were handed out.
    std::optional<size_t> takeNext();
    void finish(size_t index, ParallelChildResult result);
    void close();

    // The finished root: kept children plus "Other" and all finished bytes. Moves the
    // children out; call once, after every worker has returned.
    DiskNode takeRoot();
    int64_t totalFolders() const;
    int64_t totalFiles() const;

    // Binds a worker's walk reports to the entry it is measuring.
    class Reporter : public WalkReporter {
    public:
        explicit Reporter(ParallelRootState& state) : state_(state) {}
        void setIndex(size_t index) { index_ = index; }
        bool wantsPartials() const override;
        void counts(int64_t folders, int64_t files, const std::string& currentItem) override;
        void partial(DiskNode node) override;

    private:
        ParallelRootState& state_;
        size_t index_ = 0;
    };

private:
    void setCounts(size_t index, int64_t folders, int64_t files, const std::string& item);
    void updateActive(size_t index, DiskNode node);
    void schedulePartial();  // caller holds the lock
    void deliverPartials();
    DiskNode buildRoot(KeptChildren children, int64_t bytes, bool partial) const;

    const std::string rootPath_;
    const DiskCategory category_;
    const size_t childCount_;
    const ScanProgress reportProgress_;
    const ScanPartial reportPartial_;
    const ScanCancellation& cancellation_;
    std::unique_ptr<platform::SerialQueue> partialQueue_;

    mutable std::mutex mutex_;
    size_t nextIndex_ = 0;
    KeptChildren finishedVisible_;
    int64_t finishedBytes_ = 0;
    std::map<size_t, DiskNode> active_;
    std::vector<int64_t> folderCounts_;
    std::vector<int64_t> fileCounts_;
    int64_t totalFolders_ = 0;
    int64_t totalFiles_ = 0;
    double lastProgress_ = 0;
    double lastPartial_ = 0;
    bool pendingPartial_ = false;
    bool partialDeliveryQueued_ = false;
    bool closed_ = false;
};

}  // namespace veldan
