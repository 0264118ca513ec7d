#include "activity/ActivityArchiveCodec.hpp"

#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "platform/PropertyListFields.hpp"

namespace veldan {

namespace {

using platform::PropertyListReader;
using platform::PropertyListWriter;
using platform::writeDictionary;
using Object = PropertyListReader::Object;
using Ref = PropertyListWriter::Ref;

// Paths and titles longer than this are not ones Veldan wrote.
constexpr size_t maximumTextCharacters = 64 * 1024;

Ref encodeSnapshot(PropertyListWriter& w, const ActivitySnapshot& s) {
    return writeDictionary(w, {{"checkedAt", w.date(s.checkedAt)},
                               {"freeBytes", w.integer(s.freeBytes)},
                               {"mappedBytes", w.integer(s.mappedBytes)},
                               {"unreadableItems", w.integer(s.unreadableItems)}});
}

Ref encodeDownload(PropertyListWriter& w, const TrackedDownload& d) {
    return writeDictionary(w,
                           {{"path", w.string(d.path)},
                            {"bytes", w.integer(d.bytes)},
                            {"addedAt", w.date(d.addedAt)},
                            {"modifiedAt", w.date(d.modifiedAt)},
                            // Both are unsigned; the bits are kept as they are in a signed integer.
                            {"device", w.integer(static_cast<int64_t>(d.device))},
                            {"inode", w.integer(static_cast<int64_t>(d.inode))},
                            {"size", w.integer(d.size)},
                            {"createdSeconds", w.integer(d.created.seconds)},
                            {"createdNanoseconds", w.integer(d.created.nanoseconds)},
                            {"modifiedSeconds", w.integer(d.modified.seconds)},
                            {"modifiedNanoseconds", w.integer(d.modified.nanoseconds)}});
}

Ref encodeActivity(PropertyListWriter& w, const CleanupActivity& a) {
    return writeDictionary(w, {{"id", w.string(a.id)},
                               {"date", w.date(a.date)},
                               {"title", w.string(a.title)},
                               {"kind", w.string(CleanupActivity::kindName(a.kind))},
                               {"bytes", w.integer(a.bytes)},
                               {"count", w.integer(a.count)}});
}

template <typename T, typename Encode>
Ref encodeList(PropertyListWriter& w, const std::vector<T>& items, Encode encode) {
    std::vector<Ref> refs;
    refs.reserve(items.size());
    for (const auto& item : items)
        refs.push_back(encode(w, item));
    return w.array(refs);
}

// The fields of one dictionary, read by position in the key list it was looked up with.
class Record {
public:
    Record(const PropertyListReader& reader, std::optional<std::vector<Object>> values)
        : r_(reader), values_(std::move(values)) {}

    bool valid() const { return values_.has_value(); }
    Object operator[](size_t i) const { return (*values_)[i]; }
    std::optional<int64_t> integer(size_t i) const { return r_.integer((*values_)[i]); }
    std::optional<PropertyListReader::Array> array(size_t i) const {
        return r_.array((*values_)[i]);
    }
    std::optional<std::chrono::system_clock::time_point> date(size_t i) const {
        return r_.date((*values_)[i]);
    }
    std::optional<std::string> text(size_t i) const {
        return r_.string((*values_)[i], maximumTextCharacters);
    }

private:
    const PropertyListReader& r_;
    std::optional<std::vector<Object>> values_;
};

std::optional<ActivitySnapshot> decodeSnapshot(const PropertyListReader& r, Object object) {
    const Record f(r, platform::dictionaryFields(
                          r, object, {"checkedAt", "freeBytes", "mappedBytes", "unreadableItems"}));
    if (!f.valid()) return std::nullopt;
    auto checkedAt = f.date(0);
    auto freeBytes = f.integer(1);
    auto mappedBytes = f.integer(2);
    auto unreadable = f.integer(3);
    if (!checkedAt || !freeBytes || !mappedBytes || !unreadable) return std::nullopt;
    return ActivitySnapshot{*checkedAt, *freeBytes, *mappedBytes, *unreadable};
}

std::optional<TrackedDownload> decodeDownload(const PropertyListReader& r, Object object) {
    const Record f(
        r, platform::dictionaryFields(
               r, object,
               {"path", "bytes", "addedAt", "modifiedAt", "device", "inode", "size",
                "createdSeconds", "createdNanoseconds", "modifiedSeconds", "modifiedNanoseconds"}));
    if (!f.valid()) return std::nullopt;
    auto path = f.text(0);
    auto bytes = f.integer(1);
    auto addedAt = f.date(2);
    auto modifiedAt = f.date(3);
    auto device = f.integer(4);
    auto inode = f.integer(5);
    if (!path || path->empty() || path->front() != '/' || !bytes || !addedAt || !modifiedAt ||
        !device || !inode) {
        return std::nullopt;
    }
    TrackedDownload d;
    d.path = std::move(*path);
    d.bytes = *bytes;
    d.addedAt = *addedAt;
    d.modifiedAt = *modifiedAt;
    d.device = static_cast<uint64_t>(*device);
    d.inode = static_cast<uint64_t>(*inode);
    // The exact values are all there or none is used.
    auto size = f.integer(6);
    auto createdSeconds = f.integer(7);
    auto createdNanoseconds = f.integer(8);
    auto modifiedSeconds = f.integer(9);
    auto modifiedNanoseconds = f.integer(10);
    if (size && createdSeconds && createdNanoseconds && modifiedSeconds && modifiedNanoseconds) {
        d.size = *size;
        d.created = {*createdSeconds, *createdNanoseconds};
        d.modified = {*modifiedSeconds, *modifiedNanoseconds};
    }
    return d;
}

std::optional<CleanupActivity> decodeActivity(const PropertyListReader& r, Object object) {
    const Record f(r, platform::dictionaryFields(
                          r, object, {"id", "date", "title", "kind", "bytes", "count"}));
    if (!f.valid()) return std::nullopt;
    auto id = f.text(0);
    auto date = f.date(1);
    auto title = f.text(2);
    auto kindName = f.text(3);
    auto bytes = f.integer(4);
    auto count = f.integer(5);
    if (!id || !date || !title || !kindName || !bytes || !count) return std::nullopt;
    auto kind = CleanupActivity::kindNamed(*kindName);
    if (!kind) return std::nullopt;
    return CleanupActivity{std::move(*id), *date, std::move(*title), *kind, *bytes, *count};
}

// The entries of the array that decode, at most `limit` of them (a hostile file may hold
// millions); false when there is no array.
template <typename T, typename Decode>
bool decodeList(const PropertyListReader& r, const std::optional<PropertyListReader::Array>& items,
                size_t limit, std::vector<T>& out, Decode decode) {
    if (!items) return false;
    for (size_t i = 0; i < items->size() && out.size() < limit; ++i) {
        if (auto item = decode(r, (*items)[i])) out.push_back(std::move(*item));
    }
    return true;
}

}  // namespace

std::string ActivityArchiveCodec::encode(const ActivityArchive& archive) {
    PropertyListWriter w;
    std::vector<std::pair<std::string_view, Ref>> fields = {
        {"version", w.integer(currentVersion)},
        {"snapshots", encodeList(w, archive.snapshots, encodeSnapshot)},
        {"downloads", encodeList(w, archive.downloads, encodeDownload)},
        {"activities", encodeList(w, archive.activities, encodeActivity)}};
    if (archive.lastDailyCheckAt) {
        fields.emplace_back("lastDailyCheckAt", w.date(*archive.lastDailyCheckAt));
    }
    fields.emplace_back("totalMovedToTrashBytes", w.integer(archive.totalMovedToTrashBytes));
    fields.emplace_back("totalMovedToTrashItems", w.integer(archive.totalMovedToTrashItems));
    fields.emplace_back("totalToolCleanups", w.integer(archive.totalToolCleanups));
    return *w.finish(writeDictionary(w, fields));
}

DecodedActivityArchive ActivityArchiveCodec::decode(std::string_view document) {
    DecodedActivityArchive decoded;
    auto reader = PropertyListReader::open(document);
    if (!reader) return decoded;
    const auto& r = *reader;
    const Record f(r, platform::dictionaryFields(r, r.root(),
                                                 {"version", "snapshots", "downloads", "activities",
                                                  "lastDailyCheckAt", "totalMovedToTrashBytes",
                                                  "totalMovedToTrashItems", "totalToolCleanups"}));
    if (!f.valid()) return decoded;
    auto& a = decoded.archive;
    // Far more than the limits, so that a list a newer version keeps longer still shows its
    // newest entries once they are put in order.
    constexpr size_t readLimit = 10'000;
    bool whole = decodeList(r, f.array(1), readLimit, a.snapshots, decodeSnapshot);
    whole = decodeList(r, f.array(2), readLimit, a.downloads, decodeDownload) && whole;
    whole = decodeList(r, f.array(3), readLimit, a.activities, decodeActivity) && whole;
    a.lastDailyCheckAt = f.date(4);
    a.totalMovedToTrashBytes = f.integer(5).value_or(0);
    a.totalMovedToTrashItems = f.integer(6).value_or(0);
    a.totalToolCleanups = f.integer(7).value_or(0);
    a.keepWithinLimits();
    const auto version = f.integer(0);
    if (!version || *version < 1 || !whole) {
        decoded.status = DecodedActivityArchive::Status::damaged;
    } else if (*version > currentVersion) {
        decoded.status = DecodedActivityArchive::Status::newer;
    } else {
        decoded.status = DecodedActivityArchive::Status::current;
    }
    return decoded;
}

}  // namespace veldan
