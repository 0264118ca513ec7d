#pragma once
// Writes binary property lists ("bplist00", the format of the platform's property-list
// encoder in its binary form), built bottom-up: every value added returns a reference,
// and containers are made from references of values added before them.
//
// Each value is encoded the moment it is added and handed on in pieces of about 64 KiB
// (to a sink, or kept in memory), so the writer holds eight bytes per value for the
// offset table and nothing else: the saved map of a large scan is never in memory twice.
// References are therefore always four bytes wide (the width cannot wait for the count);
// readers take any width the trailer names.
//
// Why not libplist: libplist 2.2 (Debian 12) takes seconds to encode the few hundred
// thousand values of a large scan (its de-duplicating hash table degrades to linear
// search) and allocates several blocks per value when decoding. libplist stays the
// reference the tests hold these files against. Short scalars (keys, categories, flags,
// small numbers) are shared as the platform encoder does; long ones (paths) are unique.
//
// Text is raw bytes: strings and dictionary keys go through encodePropertyListText, so
// names that are not UTF-8 come back byte for byte (PropertyListReader decodes them).
// Dates keep whole microseconds.
//
// Contract: single-threaded; one writer per document. References are only valid for the
// writer that made them; passing any other is a bug and aborts.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace veldan::platform {

class PropertyListWriter {
public:
    using Ref = uint32_t;
    enum class WriteResult { written, tooLarge, sinkFailed };
    using Sink = std::function<bool(std::string_view piece)>;

    // Keeps the document in memory, for finish(root).
    PropertyListWriter();
    // Streams the document to `sink`. Once it would exceed `maximumBytes`, or the sink
    // refuses a piece, nothing more is written and complete() says why.
    PropertyListWriter(Sink sink, size_t maximumBytes);
    PropertyListWriter(const PropertyListWriter&) = delete;
    PropertyListWriter& operator=(const PropertyListWriter&) = delete;

    Ref string(std::string_view bytes);
    Ref integer(int64_t value);
    Ref boolean(bool value);
    Ref date(std::chrono::system_clock::time_point time);
    Ref data(std::string_view bytes);
    Ref array(std::span<const Ref> items);
    // `keys[i]` (references to strings) maps to `values[i]`; the key order is kept.
    Ref dictionary(std::span<const Ref> keys, std::span<const Ref> values);

    // True once the document can no longer be written whole (too large, or the sink
    // failed): a caller can stop adding values.
    bool failed() const { return state_ != WriteResult::written; }

    // In memory: the whole document with `root` as its top object, or nothing when it
    // would be larger than `maximumBytes`. The writer stays usable.
    std::optional<std::string> finish(Ref root, size_t maximumBytes = SIZE_MAX) const;
    // Streaming: appends the offset table and trailer with `root` as the top object and
    // hands on the last piece. Call once.
    WriteResult complete(Ref root);

private:
    Ref addScalar(std::string_view encoded);
    Ref addContainer(uint8_t marker, std::span<const Ref> first, std::span<const Ref> second);
    Ref record(std::string_view encoded);
    void checkRef(Ref ref) const;
    std::string trailer(Ref root) const;
    void flush();

    Sink sink_;  // empty: the document stays in `pending_`
    size_t maximumBytes_ = SIZE_MAX;
    WriteResult state_ = WriteResult::written;
    uint64_t written_ = 0;           // bytes handed to the sink so far
    std::string pending_;            // encoded bytes not yet handed on
    std::string scratch_;            // the encoding of the value being added
    std::vector<uint64_t> offsets_;  // where each value starts, in reference order
    // Short scalars already written, looked up without copying the candidate.
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
    };
    std::unordered_map<std::string, Ref, TextHash, std::equal_to<>> shared_;
    std::optional<Ref> booleans_[2];  // false and true: every record of a map has three
};

}  // namespace veldan::platform
