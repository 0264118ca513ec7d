#include "scan/ParallelRootState.hpp"

#include "platform/Paths.hpp"
#include "platform/Uptime.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/ScanProgressThrottle.hpp"

namespace veldan {

ParallelRootState::ParallelRootState(std::string rootPath, ScanProgress progress,
                                     ScanPartial partial, const ScanCancellation& cancellation)
    : rootPath_(std::move(rootPath)),
      category_(categoryFor(rootPath_)),
      reportProgress_(std::move(progress)),
      reportPartial_(std::move(partial)),
      cancellation_(cancellation) {
    if (reportPartial_) {
        partialQueue_ = std::make_unique<platform::SerialQueue>("com.veldan.scan-partials");
    }
}

ParallelRootState::~ParallelRootState() {
    close();
}

void ParallelRootState::finishListing(KeptChildren files, int64_t bytes, size_t subfolderCount) {
    std::lock_guard lock(mutex_);
    finishedVisible_.absorb(std::move(files));
    finishedBytes_ = saturatingAdd(finishedBytes_, bytes);
    childCount_ = subfolderCount;
    listing_.reset();
    schedulePartial();
}

std::optional<size_t> ParallelRootState::takeNext() {
    std::lock_guard lock(mutex_);
    if (nextIndex_ >= childCount_) return std::nullopt;
    return nextIndex_++;
}

void ParallelRootState::finish(size_t index, ParallelChildResult result) {
    std::lock_guard lock(mutex_);
    finishedBytes_ = saturatingAdd(finishedBytes_, result.bytes);
    if (result.node) finishedVisible_.keepLargest(std::move(*result.node));
    active_.erase(index);
    schedulePartial();
}

void ParallelRootState::addCounts(int64_t folders, int64_t files) {
    std::lock_guard lock(mutex_);
    otherFolders_ = saturatingAdd(otherFolders_, folders);
    otherFiles_ = saturatingAdd(otherFiles_, files);
    sumCounts();
}

void ParallelRootState::settleCounts(size_t worker, int64_t folders, int64_t files) {
    std::lock_guard lock(mutex_);
    workerFolders_.at(worker) = folders;
    workerFiles_.at(worker) = files;
    sumCounts();
}

void ParallelRootState::sumCounts() {
    // A handful of workers, so the totals are summed again at every report: entries
    // finish in the hundreds of thousands in a flat folder and must not each cost more.
    totalFolders_ = otherFolders_;
    totalFiles_ = otherFiles_;
    for (size_t i = 0; i < maximumWorkers; ++i) {
        totalFolders_ = saturatingAdd(totalFolders_, workerFolders_[i]);
        totalFiles_ = saturatingAdd(totalFiles_, workerFiles_[i]);
    }
}

void ParallelRootState::close() {
    {
        std::lock_guard lock(mutex_);
        closed_ = true;
    }
    // A delivery already running finishes before close() returns; queued ones see
    // `closed_` and do nothing, so the final result is never followed by a partial.
    if (partialQueue_) partialQueue_->drain();
}

void ParallelRootState::setCounts(size_t worker, int64_t folders, int64_t files,
                                  const std::string& item) {
    int64_t totalFolders = 0;
    int64_t totalFiles = 0;
    {
        std::lock_guard lock(mutex_);
        workerFolders_.at(worker) = folders;
        workerFiles_.at(worker) = files;
        sumCounts();
        const double now = platform::uptimeSeconds();
        if (!reportProgress_ || now - lastProgress_ < ScanProgressThrottle::progressInterval) {
            return;
        }
        lastProgress_ = now;
        totalFolders = totalFolders_;
        totalFiles = totalFiles_;
    }
    reportProgress_(item, totalFolders, totalFiles);
}

void ParallelRootState::updateActive(size_t index, DiskNode node) {
    std::lock_guard lock(mutex_);
    active_[index] = std::move(node);
    schedulePartial();
}

void ParallelRootState::updateListing(DiskNode node) {
    std::lock_guard lock(mutex_);
    listing_ = std::move(node);
    schedulePartial();
}

void ParallelRootState::schedulePartial() {
    if (!partialQueue_ || closed_ || cancellation_.cancelled()) return;
    if (platform::uptimeSeconds() - lastPartial_ < ScanProgressThrottle::partialInterval) return;
    pendingPartial_ = true;
    if (partialDeliveryQueued_) return;
    partialDeliveryQueued_ = true;
    partialQueue_->async([this] { deliverPartials(); });
}

void ParallelRootState::deliverPartials() {
    DiskNode partial;
    {
        std::lock_guard lock(mutex_);
        partialDeliveryQueued_ = false;
        // A stopped scan ends its deliveries at once, not at close(): its workers hand
        // back half-measured nodes that must not reach the map.
        if (closed_ || !pendingPartial_ || cancellation_.cancelled()) return;
        pendingPartial_ = false;
        if (listing_) {
            // Only the folder's own files are known yet; the listing laid them out.
            partial = buildRoot({}, listing_->bytes, true);
            partial.children = listing_->children;
        } else {
            KeptChildren children = finishedVisible_;
            int64_t bytes = finishedBytes_;
            for (const auto& [index, node] : active_) {
                bytes = saturatingAdd(bytes, node.bytes);
                children.keepLargest(node);
            }
            partial = buildRoot(std::move(children), bytes, true);
        }
        // Stamped once built, so that a slow build never brings the next one closer.
        lastPartial_ = platform::uptimeSeconds();
    }
    reportPartial_(partial);
}

DiskNode ParallelRootState::buildRoot(KeptChildren children, int64_t bytes, bool partial) const {
    DiskNode root;
    root.path = rootPath_;
    root.name = rootPath_ == "/" ? "/" : std::string(platform::lastPathComponent(rootPath_));
    root.bytes = bytes;
    root.category = category_;
    root.children = std::move(children).finish(rootPath_, category_);
    root.isDirectory = true;
    root.isPartial = partial;
    return root;
}

DiskNode ParallelRootState::takeRoot() {
    std::lock_guard lock(mutex_);
    return buildRoot(std::move(finishedVisible_), finishedBytes_, false);
}

int64_t ParallelRootState::totalFolders() const {
    std::lock_guard lock(mutex_);
    return totalFolders_;
}

int64_t ParallelRootState::totalFiles() const {
    std::lock_guard lock(mutex_);
    return totalFiles_;
}

bool ParallelRootState::Reporter::wantsPartials() const {
    return static_cast<bool>(state_.reportPartial_);
}

void ParallelRootState::Reporter::counts(int64_t folders, int64_t files,
                                         const std::string& currentItem) {
    state_.setCounts(worker_, folders, files, currentItem);
}

void ParallelRootState::Reporter::partial(DiskNode node) {
    if (listing_) {
        state_.updateListing(std::move(node));
    } else {
        state_.updateActive(index_, std::move(node));
    }
}

}  // namespace veldan
