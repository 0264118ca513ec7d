#include "platform/PropertyListWriter.hpp"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

#include "platform/PropertyListText.hpp"
#include "platform/Utf8.hpp"

namespace veldan::platform {

namespace {

// Scalars up to this many encoded bytes are shared between equal values.
constexpr size_t maximumSharedBytes = 40;

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr int64_t referenceDateMicroseconds = 978'307'200LL * 1'000'000;

void appendBigEndian(std::string& out, uint64_t value, unsigned bytes) {
    char digits[8];
    for (unsigned i = 0; i < bytes; ++i)
        digits[i] = static_cast<char>((value >> (8 * (bytes - 1 - i))) & 0xFF);
    out.append(digits, bytes);
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

bool isAscii(std::string_view text) {
    // Eight bytes at a time: a saved map is mostly long ASCII paths.
    size_t at = 0;
    for (; at + 8 <= text.size(); at += 8) {
        uint64_t word = 0;
        std::memcpy(&word, text.data() + at, 8);
        if (word & 0x8080808080808080ULL) return false;
    }
    for (; at < text.size(); ++at) {
        if (static_cast<unsigned char>(text[at]) >= 0x80) return false;
    }
    return true;
}

void appendRefs(std::string& out, std::span<const uint32_t> refs) {
    const size_t start = out.size();
    out.resize(start + refs.size() * 4);
    char* at = out.data() + start;
    for (uint32_t ref : refs) {
        const uint32_t bigEndian =
            std::endian::native == std::endian::big ? ref : __builtin_bswap32(ref);
        std::memcpy(at, &bigEndian, 4);
        at += 4;
    }
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

constexpr size_t pieceBytes = 64 * 1024;
constexpr unsigned refSize = 4;

}  // namespace

PropertyListWriter::PropertyListWriter() : pending_("bplist00") {}

PropertyListWriter::PropertyListWriter(Sink sink, size_t maximumBytes)
    : sink_(std::move(sink)), maximumBytes_(maximumBytes) {
    pending_.reserve(pieceBytes + 64);
    pending_ = "bplist00";
}

void PropertyListWriter::checkRef(Ref ref) const {
    if (ref >= offsets_.size()) std::abort();
}

void PropertyListWriter::flush() {
    if (!sink_ || pending_.empty() || failed()) return;
    if (!sink_(pending_)) state_ = WriteResult::sinkFailed;
    pending_.clear();
}

PropertyListWriter::Ref PropertyListWriter::record(std::string_view encoded) {
    if (offsets_.size() >= UINT32_MAX) std::abort();
    const auto ref = static_cast<Ref>(offsets_.size());
    const uint64_t start = written_ + pending_.size();
    offsets_.push_back(start);
    if (start + encoded.size() > maximumBytes_) state_ = WriteResult::tooLarge;
    if (failed()) return ref;  // references stay valid; nothing more is written
    pending_.append(encoded);
    if (sink_ && pending_.size() >= pieceBytes) {
        written_ += pending_.size();
        flush();
    }
    return ref;
}

PropertyListWriter::Ref PropertyListWriter::addScalar(std::string_view encoded) {
    // Keys, categories, flags and small numbers repeat in every record and are shared;
    // paths are unique, so remembering them would only cost memory.
    if (encoded.size() > maximumSharedBytes) return record(encoded);
    if (auto found = shared_.find(encoded); found != shared_.end()) return found->second;
    const Ref ref = record(encoded);
    shared_.emplace(std::string(encoded), ref);
    return ref;
}

PropertyListWriter::Ref PropertyListWriter::addContainer(uint8_t marker, std::span<const Ref> first,
                                                         std::span<const Ref> second) {
    if (first.empty() && second.empty()) {
        // Empty containers are shared like scalars: they cannot nest anything.
        const char empty = static_cast<char>(marker);
        return addScalar(std::string_view(&empty, 1));
    }
    for (Ref ref : first)
        checkRef(ref);
    for (Ref ref : second)
        checkRef(ref);
    static_assert(refSize == 4);
    scratch_.clear();
    appendHeader(scratch_, marker, first.size());
    appendRefs(scratch_, first);
    appendRefs(scratch_, second);
    return record(scratch_);
}

PropertyListWriter::Ref PropertyListWriter::string(std::string_view bytes) {
    scratch_.clear();
    if (isAscii(bytes)) {
        // ASCII needs no re-encoding; nearly every name and path is ASCII.
        appendHeader(scratch_, 0x50, bytes.size());
        scratch_.append(bytes);
        return addScalar(scratch_);
    }
    const std::string text = encodePropertyListText(bytes);
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
    auto& known = booleans_[value ? 1 : 0];
    if (!known)
        known = addScalar(value ? std::string_view("\x09", 1) : std::string_view("\x08", 1));
    return *known;
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
    return addContainer(0xA0, items, {});
}

PropertyListWriter::Ref PropertyListWriter::dictionary(std::span<const Ref> keys,
                                                       std::span<const Ref> values) {
    if (keys.size() != values.size()) std::abort();
    return addContainer(0xD0, keys, values);
}

std::string PropertyListWriter::trailer(Ref root) const {
    checkRef(root);
    const uint64_t tableOffset = written_ + pending_.size();
    const unsigned offsetSize = byteWidth(offsets_.empty() ? 0 : offsets_.back());
    std::string out;
    out.reserve(offsets_.size() * offsetSize + 32);
    for (uint64_t offset : offsets_)
        appendBigEndian(out, offset, offsetSize);
    out.append(6, '\0');  // unused, sort version
    out += static_cast<char>(offsetSize);
    out += static_cast<char>(refSize);
    appendBigEndian(out, offsets_.size(), 8);
    appendBigEndian(out, root, 8);
    appendBigEndian(out, tableOffset, 8);
    return out;
}

std::optional<std::string> PropertyListWriter::finish(Ref root, size_t maximumBytes) const {
    if (sink_ || failed()) std::abort();  // finish() is for documents kept in memory
    std::string document = pending_;
    document += trailer(root);
    if (document.size() > maximumBytes) return std::nullopt;
    return document;
}

PropertyListWriter::WriteResult PropertyListWriter::complete(Ref root) {
    if (!sink_) std::abort();  // complete() is for streamed documents
    if (failed()) return state_;
    const std::string end = trailer(root);
    if (written_ + pending_.size() + end.size() > maximumBytes_) {
        state_ = WriteResult::tooLarge;
        return state_;
    }
    pending_ += end;
    flush();
    return state_;
}

}  // namespace veldan::platform
