// The text report of what the map shows, written where the save panel says.

#include "app/DiskMapModel.hpp"
#include "cache/ScanReportBuilder.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/LocaleFormat.hpp"

namespace veldan {

namespace {

const char* proposedName(DiskMapModel::SummaryKind kind) {
    switch (kind) {
        case DiskMapModel::SummaryKind::progress:
            return ScanReportBuilder::progressFileName;
        case DiskMapModel::SummaryKind::partial:
            return ScanReportBuilder::partialFileName;
        case DiskMapModel::SummaryKind::summary:
            break;
    }
    return ScanReportBuilder::summaryFileName;
}

}  // namespace

DiskMapModel::SummaryKind DiskMapModel::summaryKind() const {
    if (isScanning_) return SummaryKind::progress;
    if (wasScanStopped_) return SummaryKind::partial;
    return SummaryKind::summary;
}

void DiskMapModel::saveSummary() {
    if (!canExportSummary() || !panels_) return;
    refreshMapFreshness();

    const SummaryKind kind = summaryKind();
    ReportSaveRequest request;
    request.proposedName = proposedName(kind);
    if (kind != SummaryKind::summary || !snapshot_) {
        request.message = "This report includes local file paths and incomplete measurements.";
    } else if (isShowingCachedScan_) {
        request.message =
            "This report includes local file paths and measurements from an earlier map.";
    } else {
        request.message = "This report includes local file paths.";
    }
    const uint64_t revision = mapRevision_;
    const int64_t generation = scanGeneration_;
    panels_->chooseReportDestination(request, [this, kind, revision,
                                               generation](std::optional<std::string> file) {
        if (!file) return;
        if (mapRevision_ != revision || scanGeneration_ != generation || summaryKind() != kind) {
            setScanError(reportMapChangedError);
            return;
        }
        writeSummary(*file, kind);
    });
}

void DiskMapModel::writeSummary(const std::string& file, SummaryKind kind) {
    // Everything the report needs is taken now, on this thread; the text is built and
    // written on a worker.
    std::function<std::string()> build;
    if (kind == SummaryKind::summary && snapshot_) {
        build = [snapshot = snapshot_, recommendations = recommendations_,
                 cached = isShowingCachedScan_, outdated = mapNeedsRefresh_] {
            const auto locale = platform::LocaleFormat::system();
            std::string status =
                cached ? "Earlier map, saved " + locale.abbreviatedDateTime(snapshot->finishedAt)
                       : "Complete";
            if (outdated) status += "; files changed since, so sizes may be out of date";
            return ScanReportBuilder::build(snapshot->root.path, *snapshot, recommendations,
                                            status);
        };
    } else {
        build = [scope = selectedURL_, preview = scanPreview_, volume = volume_,
                 progress = scanProgress_, scanning = kind == SummaryKind::progress] {
            DiskNode empty;
            empty.path = scope;
            empty.isDirectory = true;
            return ScanReportBuilder::buildPartial(scope, preview ? *preview : empty, volume, {},
                                                   progress.folders, progress.files, scanning);
        };
    }
    tasks_.run(
        [file, build = std::move(build)]() -> std::optional<std::string> {
            auto failure = platform::writeFileAtomically(file, build() + "\n");
            // The report is a change this program made itself inside a watched folder.
            if (!failure) ScanSessionCache::shared().invalidateCurrent({file});
            return failure;
        },
        [this](std::optional<std::string> failure) {
            if (failure) setScanError("Could not save the report: " + *failure + ".");
        });
}

}  // namespace veldan
