#include "devcleanup/DevCleanupScanner.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <thread>
#include <utility>
#include <vector>

#include "devcleanup/DevDiscoveryState.hpp"
#include "devcleanup/DevDiscoveryWorker.hpp"
#include "devcleanup/DevFolderAccess.hpp"
#include "devcleanup/DevMeasurementState.hpp"
#include "devcleanup/DevTreeMeasurer.hpp"
#include "devcleanup/DevWalkRules.hpp"
#include "platform/DirectoryReader.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "platform/Uuid.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

template <typename Body>
void runWorkers(size_t count, const Body& body) {
    std::vector<std::jthread> threads;
    threads.reserve(count);
    for (size_t i = 0; i < count; ++i)
        threads.emplace_back([&body] { body(); });
}

void report(const DevCleanupScanProgress& progress, DevCleanupScanPhase phase, int64_t completed,
            int64_t total) {
    if (progress) progress(phase, devCleanupScanPhaseLabel(phase), completed, total);
}

// The scope's own folders, handed out first, each with the marker files the scope holds.
std::optional<std::vector<DevQueuedFolder>> listScope(const std::string& scope,
                                                      const SharedFd& scopeFd) {
    std::vector<char> buffer;
    platform::DirectoryReader reader(scopeFd->get(), buffer);
    platform::DirectoryEntryView entry;
    std::vector<DevQueuedFolder> roots;
    uint8_t markers = 0;
    while (reader.next(entry)) {
        const std::string_view name(entry.name, entry.length);
        if (entry.type == DT_DIR || entry.type == DT_UNKNOWN) {
            roots.push_back(DevQueuedFolder{scopeFd, platform::joinPath(scope, name), 1, 0});
        }
        if (const uint8_t bit = devCleanupSiblingMarkerBit(name)) {
            if ((entry.type != DT_LNK && entry.type != DT_UNKNOWN) ||
                ::faccessat(scopeFd->get(), entry.name, F_OK, 0) == 0) {
                markers |= bit;
            }
        }
    }
    if (reader.error() != 0) return std::nullopt;
    for (auto& root : roots)
        root.parentMarkers = markers;
    return roots;
}

std::optional<std::vector<DevCandidate>> discover(const std::string& scope, const std::string& home,
                                                  const ScanCancellation& cancellation,
                                                  const DevCleanupScanProgress& progress,
                                                  int64_t& unreadable) {
    int error = 0;
    platform::UniqueFd fd = openFolderAtPath(scope, error);
    if (!fd) return std::nullopt;
    const auto status = platform::statDescriptor(fd.get(), error);
    if (!status || !status->isDirectory()) return std::nullopt;
    const SharedFd scopeFd = std::make_shared<const platform::UniqueFd>(std::move(fd));
    auto roots = listScope(scope, scopeFd);
    if (!roots) return std::nullopt;
    const DevWalkRules rules(scope, status->device, home);
    report(progress, DevCleanupScanPhase::discovering, 0, 0);
    DevDiscoveryState state(std::move(*roots));
    runWorkers(DevCleanupScanner::discoveryWorkers,
               [&] { DevDiscoveryWorker(state, rules, cancellation, progress).run(); });
    if (cancellation.cancelled()) return std::nullopt;
    unreadable = state.unreadableCount();
    auto candidates = state.takeCandidates();
    std::sort(candidates.begin(), candidates.end(),
              [](const DevCandidate& a, const DevCandidate& b) { return a.path < b.path; });
    return candidates;
}

// Nothing when the candidate cannot be opened, or changed while it was measured; then
// `unreadable` grows by one. `unreadable` also receives what the walk could not read.
// The candidate's path moves into the item.
std::optional<DevCleanupItem> measureCandidate(DevCandidate& candidate, DevTreeMeasurer& measurer,
                                               int64_t& unreadable) {
    int error = 0;
    platform::UniqueFd fd = openFolderAtPath(candidate.path, error);
    const auto before = fd ? platform::statDescriptor(fd.get(), error) : std::nullopt;
    if (!before || !candidate.isSameFolder(*before)) {
        ++unreadable;
        return std::nullopt;
    }
    const auto measured = measurer.measure(std::move(fd), candidate.path, *before);
    if (measured.cancelled) return std::nullopt;
    const auto after = statusAtPath(candidate.path);
    if (!after || !candidate.isSameFolder(*after)) {
        ++unreadable;
        return std::nullopt;
    }
    unreadable += measured.unreadableItems;
    DevCleanupItem item;
    static_cast<DevCandidate&>(item) = std::move(candidate);
    item.bytes = measured.bytes;
    item.unreadableItems = measured.unreadableItems;
    item.contentsFingerprint = measured.fingerprint;
    return item;
}

std::optional<DevMeasurementState::Snapshot> measure(std::vector<DevCandidate>& candidates,
                                                     const ScanCancellation& cancellation,
                                                     const DevCleanupScanProgress& progress) {
    const auto phase = DevCleanupScanPhase::measuring;
    const auto total = static_cast<int64_t>(candidates.size());
    report(progress, phase, 0, total);
    DevMeasurementState state(candidates.size());
    const auto reportIfDue = [&] {
        if (auto completed = state.dueReport()) report(progress, phase, *completed, total);
    };
    runWorkers(std::min(candidates.size(), DevCleanupScanner::measuringWorkers), [&] {
        DevTreeMeasurer measurer(cancellation, reportIfDue);
        while (!cancellation.cancelled()) {
            const auto index = state.take();
            if (!index) return;
            int64_t unreadable = 0;
            auto item = measureCandidate(candidates[*index], measurer, unreadable);
            if (cancellation.cancelled()) return;
            state.finish(*index, std::move(item), unreadable);
            reportIfDue();
        }
    });
    if (cancellation.cancelled()) return std::nullopt;
    report(progress, phase, total, total);
    return state.snapshot();
}

bool sameContents(platform::UniqueFd fd, const DevCleanupItem& item,
                  const DevContentsProgress& progress) {
    int error = 0;
    const auto status = fd ? platform::statDescriptor(fd.get(), error) : std::nullopt;
    if (!status || !item.isSameFolder(*status)) return false;
    // A check that is started is finished: only a change of the folder stops it.
    const ScanCancellation neverCancelled;
    DevTreeMeasurer measurer(neverCancelled, progress);
    const auto measured = measurer.measure(std::move(fd), item.path, *status);
    return measured.unreadableItems == 0 && measured.bytes == item.bytes &&
           measured.fingerprint == item.contentsFingerprint;
}

}  // namespace

DevCleanupScanner::DevCleanupScanner(std::string home) : home_(std::move(home)) {}

DevCleanupScanner::DevCleanupScanner()
    : DevCleanupScanner(platform::standardizePath(platform::homeFolder())) {}

std::optional<DevCleanupResult> DevCleanupScanner::scan(
    const std::string& folder, const ScanCancellation& cancellation,
    const DevCleanupScanProgress& progress) const {
    const std::string scope = platform::absolutePath(folder);
    int64_t discoveryUnreadable = 0;
    auto candidates = discover(scope, home_, cancellation, progress, discoveryUnreadable);
    if (!candidates) return std::nullopt;
    auto measured = measure(*candidates, cancellation, progress);
    candidates.reset();
    if (!measured) return std::nullopt;

    DevCleanupResult result;
    result.revision = platform::randomUuid();
    result.scope = scope;
    result.items = std::move(measured->items);
    std::sort(result.items.begin(), result.items.end(),
              [](const DevCleanupItem& a, const DevCleanupItem& b) {
                  if (a.bytes != b.bytes) return a.bytes > b.bytes;
                  return a.path < b.path;
              });
    result.unreadableItems = saturatingAdd(measured->unreadable, discoveryUnreadable);
    result.scannedAt = std::chrono::system_clock::now();
    std::vector<const DevCleanupItem*> all;
    all.reserve(result.items.size());
    for (const auto& item : result.items) {
        result.itemBytesByPath.emplace(item.path, item.bytes);
        all.push_back(&item);
    }
    result.bytes = DevCleanupResult::unionBytes(std::move(all));
    return result;
}

std::optional<DevCleanupKind> DevCleanupScanner::kind(const std::string& path,
                                                      std::string_view name) {
    const auto* rule = devCleanupRuleForFolder(name);
    if (!rule) return std::nullopt;
    const std::string holder = rule->markerInside ? path : platform::parentPath(path);
    for (auto marker : rule->markers) {
        if (marker.empty()) continue;
        if (::faccessat(AT_FDCWD, platform::joinPath(holder, marker).c_str(), F_OK, 0) == 0) {
            return rule->kind;
        }
    }
    return std::nullopt;
}

std::optional<DevCleanupKind> DevCleanupScanner::kindAt(int parentFd, const std::string& name) {
    const auto* rule = devCleanupRuleForFolder(name);
    if (!rule) return std::nullopt;
    for (auto marker : rule->markers) {
        if (marker.empty()) continue;
        const std::string relative =
            rule->markerInside ? name + "/" + std::string(marker) : std::string(marker);
        if (::faccessat(parentFd, relative.c_str(), F_OK, 0) == 0) return rule->kind;
    }
    return std::nullopt;
}

bool DevCleanupScanner::stillMatchesContents(const DevCleanupItem& item,
                                             const DevContentsProgress& progress) {
    int error = 0;
    return sameContents(openFolderAtPath(item.path, error), item, progress);
}

bool DevCleanupScanner::stillMatchesContentsAt(int parentFd, const std::string& name,
                                               const DevCleanupItem& item,
                                               const DevContentsProgress& progress) {
    int error = 0;
    return sameContents(platform::openDirectoryAt(parentFd, name.c_str(), error), item, progress);
}

}  // namespace veldan
