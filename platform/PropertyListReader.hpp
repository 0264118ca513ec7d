#pragma once
// Reads binary property lists ("bplist00") in place: nothing is copied or allocated until
// a value is asked for, so a large saved map decodes in a few milliseconds.
//
// Every read is bounds-checked against the document; a malformed or hostile document
// yields empty answers (an invalid object, nothing for a value), never a crash. The
// reader does not follow references on its own, so shared or cyclic containers cannot
// make it loop; a caller that walks a tree bounds its own work.
//
// Strings come back as raw bytes (decodePropertyListText undoes the writer's escaping).
// Text containing U+0000 or unpaired UTF-16 surrogates, and one-byte strings with bytes
// above 0x7F, are refused: they never name a file.
//
// Contract: the document must outlive the reader; a reader is immutable and may be used
// from several threads.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace veldan::platform {

class PropertyListReader {
public:
    enum class Type : uint8_t {
        invalid,  // a reference or object that does not decode
        boolean,
        integer,
        real,
        date,
        data,
        string,
        array,
        dictionary,
        other  // null, UID, set and the like: never used here
    };

    class Object {
    public:
        Object() = default;
        bool valid() const { return index_ != none; }
        // The same object of the document: shared values (keys, flags) compare equal.
        friend bool operator==(Object, Object) = default;

    private:
        friend class PropertyListReader;
        static constexpr uint64_t none = UINT64_MAX;
        explicit Object(uint64_t index) : index_(index) {}
        uint64_t index_ = none;
    };

    class Array {
    public:
        size_t size() const { return count_; }
        Object operator[](size_t i) const;

    private:
        friend class PropertyListReader;
        const PropertyListReader* reader_ = nullptr;
        const char* refs_ = nullptr;
        size_t count_ = 0;
    };

    class Dictionary {
    public:
        size_t size() const { return count_; }
        Object key(size_t i) const;
        Object value(size_t i) const;

    private:
        friend class PropertyListReader;
        const PropertyListReader* reader_ = nullptr;
        const char* refs_ = nullptr;
        size_t count_ = 0;
    };

    // Checks the header, the trailer and the offset table; nothing when they are malformed.
    static std::optional<PropertyListReader> open(std::string_view document);

    Object root() const { return Object(root_); }
    uint64_t objectCount() const { return objectCount_; }

    Type type(Object object) const;
    std::optional<bool> boolean(Object object) const;
    // One-, two- and four-byte integers are unsigned, eight-byte ones signed; sixteen-byte
    // ones only when they fit.
    std::optional<int64_t> integer(Object object) const;
    std::optional<double> real(Object object) const;
    // Microsecond precision; nothing for dates before 1747 or after 2254.
    std::optional<std::chrono::system_clock::time_point> date(Object object) const;
    std::optional<std::string> data(Object object) const;
    // Nothing also when the text holds more than `maximumCharacters` (checked before
    // anything is allocated), so a caller can bound what a hostile document costs it.
    std::optional<std::string> string(Object object, size_t maximumCharacters = SIZE_MAX) const;
    // Whether `object` is a string equal to `ascii`, without decoding it.
    bool stringEquals(Object object, std::string_view ascii) const;
    std::optional<Array> array(Object object) const;
    std::optional<Dictionary> dictionary(Object object) const;

private:
    struct Header {
        uint8_t marker = 0;
        uint64_t count = 0;          // low nibble, or the integer that follows it
        const char* body = nullptr;  // first byte after the marker and count
    };

    PropertyListReader() = default;
    std::optional<Header> header(Object object) const;
    Object reference(const char* at) const;
    const char* containerRefs(const Header& header, uint64_t refs) const;

    const char* begin_ = nullptr;
    const char* objectsEnd_ = nullptr;  // the offset table starts here
    const char* offsetTable_ = nullptr;
    uint64_t objectCount_ = 0;
    uint64_t root_ = 0;
    unsigned offsetSize_ = 0;
    unsigned refSize_ = 0;
};

}  // namespace veldan::platform
