#include "activity/WidgetDigestCodec.hpp"

#include <utility>
#include <vector>

#include "platform/PropertyListFields.hpp"

namespace veldan {

namespace {

using platform::PropertyListReader;
using platform::PropertyListWriter;
using Ref = PropertyListWriter::Ref;

constexpr size_t maximumTextCharacters = 64 * 1024;

enum Field : size_t {
    scopeName,
    isStartupDisk,
    isHomeFolder,
    freeBytes,
    totalBytes,
    mappedBytes,
    safeBytes,
    safeCount,
    reviewCount,
    scannedAt,
    unreadableItems,
    needsRefresh,
    isSavedMap,
    scanState,
    scanStateChangedAt,
    hasCompletedScan,
    activeScanScopeName,
    movedToTrashBytes,
    scopePath,
};

}  // namespace

std::string WidgetDigestCodec::encode(const WidgetDigest& d) {
    PropertyListWriter w;
    std::vector<std::pair<std::string_view, Ref>> f = {
        {"scopeName", w.string(d.scopeName)},        {"isStartupDisk", w.boolean(d.isStartupDisk)},
        {"isHomeFolder", w.boolean(d.isHomeFolder)}, {"freeBytes", w.integer(d.freeBytes)},
        {"totalBytes", w.integer(d.totalBytes)},     {"mappedBytes", w.integer(d.mappedBytes)},
        {"safeBytes", w.integer(d.safeBytes)},       {"safeCount", w.integer(d.safeCount)},
        {"reviewCount", w.integer(d.reviewCount)}};
    if (d.scannedAt) f.emplace_back("scannedAt", w.date(*d.scannedAt));
    f.emplace_back("unreadableItems", w.integer(d.unreadableItems));
    f.emplace_back("needsRefresh", w.boolean(d.needsRefresh));
    f.emplace_back("isSavedMap", w.boolean(d.isSavedMap));
    if (d.scanState) f.emplace_back("scanState", w.string(widgetScanStateName(*d.scanState)));
    if (d.scanStateChangedAt) f.emplace_back("scanStateChangedAt", w.date(*d.scanStateChangedAt));
    f.emplace_back("hasCompletedScan", w.boolean(d.hasCompletedScan));
    if (d.activeScanScopeName) {
        f.emplace_back("activeScanScopeName", w.string(*d.activeScanScopeName));
    }
    f.emplace_back("movedToTrashBytes", w.integer(d.movedToTrashBytes));
    f.emplace_back("scopePath", w.string(d.scopePath));
    return *w.finish(platform::writeDictionary(w, f));
}

std::optional<WidgetDigest> WidgetDigestCodec::decode(std::string_view document) {
    auto reader = PropertyListReader::open(document);
    if (!reader) return std::nullopt;
    const auto& r = *reader;
    auto fields = platform::dictionaryFields(
        r, r.root(),
        {"scopeName", "isStartupDisk", "isHomeFolder", "freeBytes", "totalBytes", "mappedBytes",
         "safeBytes", "safeCount", "reviewCount", "scannedAt", "unreadableItems", "needsRefresh",
         "isSavedMap", "scanState", "scanStateChangedAt", "hasCompletedScan", "activeScanScopeName",
         "movedToTrashBytes", "scopePath"});
    if (!fields) return std::nullopt;
    const auto& v = *fields;
    auto text = [&](Field i) { return r.string(v[i], maximumTextCharacters); };
    auto integer = [&](Field i) { return r.integer(v[i]).value_or(0); };
    auto flag = [&](Field i) { return r.boolean(v[i]).value_or(false); };

    WidgetDigest d;
    d.scopeName = text(scopeName).value_or("");
    d.isStartupDisk = flag(isStartupDisk);
    d.isHomeFolder = flag(isHomeFolder);
    d.freeBytes = integer(freeBytes);
    d.totalBytes = integer(totalBytes);
    d.mappedBytes = integer(mappedBytes);
    d.safeBytes = integer(safeBytes);
    d.safeCount = integer(safeCount);
    d.reviewCount = integer(reviewCount);
    d.scannedAt = r.date(v[scannedAt]);
    d.unreadableItems = integer(unreadableItems);
    d.needsRefresh = flag(needsRefresh);
    d.isSavedMap = flag(isSavedMap);
    if (auto state = text(scanState)) d.scanState = widgetScanStateNamed(*state);
    d.scanStateChangedAt = r.date(v[scanStateChangedAt]);
    d.hasCompletedScan = flag(hasCompletedScan);
    d.activeScanScopeName = text(activeScanScopeName);
    d.movedToTrashBytes = integer(movedToTrashBytes);
    d.scopePath = text(scopePath).value_or("");
    return d;
}

}  // namespace veldan
