#pragma once
// Writes binary property lists ("bplist00", the format of the platform's property-list
// encoder in its binary form), built bottom-up: every value added returns a reference,
// and containers are made from references of values added before them.
//
// Why not libplist: libplist 2.2 (Debian 12) takes seconds to encode the few hundred
// thousand values of a large scan (its de-duplicating hash table degrades to linear
// search) and allocates several blocks per value when decoding. This writer keeps one
// buffer, shares equal scalars (keys, categories, flags) as the platform encoder does,
// and picks the smallest reference and offset sizes when it finishes. libplist stays the
// reference the tests hold these files against.
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
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace veldan::platform {

class PropertyListWriter {
  public:
    using Ref = uint32_t;

    PropertyListWriter();
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

    // Bytes of encoded values so far: a lower bound of the document's size, so a caller
    // can give up early on a document that will be too large anyway.
    size_t encodedBytes() const { return scalars_.size() + refs_.size() * sizeof(Ref); }

    // The whole document with `root` as its top object, or nothing when it would be
    // larger than `maximumBytes`.
    std::optional<std::string> finish(Ref root, size_t maximumBytes = SIZE_MAX) const;

  private:
    enum class Kind : uint8_t { scalar, array, dictionary };
    struct Object {
        uint64_t start;   // scalar: offset in scalars_; container: index in refs_
        uint64_t length;  // scalar: bytes; container: number of elements
        Kind kind;
    };
    struct ScalarHash {
        using is_transparent = void;
        const PropertyListWriter* writer;
        size_t operator()(std::string_view bytes) const;
        size_t operator()(Ref ref) const;
    };
    struct ScalarEqual {
        using is_transparent = void;
        const PropertyListWriter* writer;
        bool operator()(Ref a, Ref b) const;
        bool operator()(std::string_view a, Ref b) const;
        bool operator()(Ref a, std::string_view b) const;
    };

    std::string_view scalarBytes(Ref ref) const;
    Ref addScalar(std::string_view encoded);
    Ref addContainer(Kind kind, std::span<const Ref> first, std::span<const Ref> second);
    void checkRef(Ref ref) const;

    std::string scratch_;          // the encoding of the scalar being added
    std::string scalars_;          // encoded scalars, back to back
    std::vector<Ref> refs_;        // container elements, back to back
    std::vector<Object> objects_;  // in reference order
    std::unordered_set<Ref, ScalarHash, ScalarEqual> shared_;
};

}  // namespace veldan::platform
