#include "platform/PropertyListWriter.hpp"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "platform/PropertyListText.hpp"
#include "platform/Utf8.hpp"

namespace veldan::platform {

namespace {

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr int64_t referenceDateMicroseconds = 978'307'200LL * 1'000'000;

void appendBigEndian(std::string& out, uint64_t value, unsigned bytes) {
    for (unsigned i = bytes; i-- > 0;)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

// The smallest of 1, 2, 4 or 8 bytes that holds `value`.
unsigned byteWidth(uint64_t value) {
    if (value <= 0xFF) return 1;
    if (value <= 0xFFFF) return 2;
    if (value <= 0xFFFFFFFFULL) return 4;
    return 8;
}

void appendInteger(std::string& out, int64_t value) {
    // Negative values take the eight-byte form, which readers take as signed.
    const auto bits = static_cast<uint64_t>(value);
    const unsigned width = value < 0 ? 8 : byteWidth(bits);
    out += static_cast<char>(0x10 | std::countr_zero(width));
    appendBigEndian(out, bits, width);
}

// A marker with its element count: in the low nibble when below 15, else as an integer.
void appendHeader(std::string& out, uint8_t type, uint64_t count) {
    if (count < 15) {
        out += static_cast<char>(type | count);
    } else {
        out += static_cast<char>(type | 0x0F);
        appendInteger(out, static_cast<int64_t>(count));
    }
}

size_t headerBytes(uint64_t count) {
    if (count < 15) return 1;
    return 2 + byteWidth(count);
}

bool isAscii(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80) return false;
    }
    return true;
}

// UTF-8 (well-formed, as encodePropertyListText makes it) to UTF-16 big-endian code units.
void appendUtf16(std::string& out, std::string_view text, size_t& units) {
    units = 0;
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = validSequenceLength(text, at);
        if (length == 0) std::abort();  // the text was encoded just before
        char32_t code = decodeSequence(text, at, length);
        at += length;
        if (code >= 0x10000) {
            code -= 0x10000;
            appendBigEndian(out, 0xD800 + (code >> 10), 2);
            appendBigEndian(out, 0xDC00 + (code & 0x3FF), 2);
            units += 2;
        } else {
            appendBigEndian(out, code, 2);
            units += 1;
        }
    }
}

}  // namespace

size_t PropertyListWriter::ScalarHash::operator()(std::string_view bytes) const {
    return std::hash<std::string_view>{}(bytes);
}
size_t PropertyListWriter::ScalarHash::operator()(Ref ref) const {
    return (*this)(writer->scalarBytes(ref));
}
bool PropertyListWriter::ScalarEqual::operator()(Ref a, Ref b) const {
    return writer->scalarBytes(a) == writer->scalarBytes(b);
}
bool PropertyListWriter::ScalarEqual::operator()(std::string_view a, Ref b) const {
    return a == writer->scalarBytes(b);
}
bool PropertyListWriter::ScalarEqual::operator()(Ref a, std::string_view b) const {
    return writer->scalarBytes(a) == b;
}

PropertyListWriter::PropertyListWriter() : shared_(64, ScalarHash{this}, ScalarEqual{this}) {}

std::string_view PropertyListWriter::scalarBytes(Ref ref) const {
    const Object& object = objects_[ref];
    return std::string_view(scalars_).substr(object.start, object.length);
}

PropertyListWriter::Ref PropertyListWriter::addScalar(std::string_view encoded) {
    if (auto found = shared_.find(encoded); found != shared_.end()) return *found;
    if (objects_.size() >= UINT32_MAX) std::abort();
    const auto ref = static_cast<Ref>(objects_.size());
    objects_.push_back(Object{scalars_.size(), encoded.size(), Kind::scalar});
    scalars_.append(encoded);
    shared_.insert(ref);
    return ref;
}

void PropertyListWriter::checkRef(Ref ref) const {
    if (ref >= objects_.size()) std::abort();
}

PropertyListWriter::Ref PropertyListWriter::addContainer(Kind kind, std::span<const Ref> first,
                                                         std::span<const Ref> second) {
    if (first.empty() && second.empty()) {
        // Empty containers are shared like scalars: they cannot nest anything.
        return addScalar(kind == Kind::array ? std::string_view("\xA0", 1)
                                             : std::string_view("\xD0", 1));
    }
    for (Ref ref : first)
        checkRef(ref);
    for (Ref ref : second)
        checkRef(ref);
    if (objects_.size() >= UINT32_MAX) std::abort();
    const auto ref = static_cast<Ref>(objects_.size());
    objects_.push_back(Object{refs_.size(), first.size(), kind});
    refs_.insert(refs_.end(), first.begin(), first.end());
    refs_.insert(refs_.end(), second.begin(), second.end());
    return ref;
}

PropertyListWriter::Ref PropertyListWriter::string(std::string_view bytes) {
    const std::string text = encodePropertyListText(bytes);
    scratch_.clear();
    if (isAscii(text)) {
        appendHeader(scratch_, 0x50, text.size());
        scratch_ += text;
    } else {
        std::string units;
        size_t count = 0;
        appendUtf16(units, text, count);
        appendHeader(scratch_, 0x60, count);
        scratch_ += units;
    }
    return addScalar(scratch_);
}

PropertyListWriter::Ref PropertyListWriter::integer(int64_t value) {
    scratch_.clear();
    appendInteger(scratch_, value);
    return addScalar(scratch_);
}

PropertyListWriter::Ref PropertyListWriter::boolean(bool value) {
    return addScalar(value ? std::string_view("\x09", 1) : std::string_view("\x08", 1));
}

PropertyListWriter::Ref PropertyListWriter::date(std::chrono::system_clock::time_point time) {
    const auto micros =
        std::chrono::floor<std::chrono::microseconds>(time).time_since_epoch().count();
    const double seconds = static_cast<double>(micros - referenceDateMicroseconds) / 1e6;
    scratch_.clear();
    scratch_ += static_cast<char>(0x33);
    appendBigEndian(scratch_, std::bit_cast<uint64_t>(seconds), 8);
    return addScalar(scratch_);
}

PropertyListWriter::Ref PropertyListWriter::data(std::string_view bytes) {
    scratch_.clear();
    appendHeader(scratch_, 0x40, bytes.size());
    scratch_ += bytes;
    return addScalar(scratch_);
}

PropertyListWriter::Ref PropertyListWriter::array(std::span<const Ref> items) {
    return addContainer(Kind::array, items, {});
}

PropertyListWriter::Ref PropertyListWriter::dictionary(std::span<const Ref> keys,
                                                       std::span<const Ref> values) {
    if (keys.size() != values.size()) std::abort();
    return addContainer(Kind::dictionary, keys, values);
}

std::optional<std::string> PropertyListWriter::finish(Ref root, size_t maximumBytes) const {
    checkRef(root);
    const uint64_t count = objects_.size();
    const unsigned refSize = byteWidth(count - 1);
    // First pass: where each object will start, so the offset width is known.
    std::vector<uint64_t> offsets(count);
    uint64_t position = 8;
    for (uint64_t i = 0; i < count; ++i) {
        offsets[i] = position;
        const Object& object = objects_[i];
        if (object.kind == Kind::scalar) {
            position += object.length;
        } else {
            const uint64_t refs =
                object.kind == Kind::dictionary ? 2 * object.length : object.length;
            position += headerBytes(object.length) + refs * refSize;
        }
    }
    const uint64_t tableOffset = position;
    const unsigned offsetSize = byteWidth(offsets.back());
    const uint64_t total = tableOffset + count * offsetSize + 32;
    if (total > maximumBytes) return std::nullopt;

    std::string out;
    out.reserve(total);
    out += "bplist00";
    for (uint64_t i = 0; i < count; ++i) {
        const Object& object = objects_[i];
        if (object.kind == Kind::scalar) {
            out.append(scalars_, object.start, object.length);
            continue;
        }
        appendHeader(out, object.kind == Kind::dictionary ? 0xD0 : 0xA0, object.length);
        const uint64_t refs = object.kind == Kind::dictionary ? 2 * object.length : object.length;
        for (uint64_t r = 0; r < refs; ++r)
            appendBigEndian(out, refs_[object.start + r], refSize);
    }
    for (uint64_t offset : offsets)
        appendBigEndian(out, offset, offsetSize);
    out.append(6, '\0');  // unused, sort version
    out += static_cast<char>(offsetSize);
    out += static_cast<char>(refSize);
    appendBigEndian(out, count, 8);
    appendBigEndian(out, root, 8);
    appendBigEndian(out, tableOffset, 8);
    return out;
}

}  // namespace veldan::platform
